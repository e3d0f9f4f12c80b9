#pragma once

#include "desk/Waiting.h"

#include <QLabel>
#include <functional>

// The cards of the start page. They only show, and lead where the caller says; the caller's layout owns them.

/// Where the card of invoices leads.
struct InvoiceActions {
    std::function<void(long code)> open; ///< to one file
    std::function<void()> list;          ///< to all that wait
};
QWidget *InvoicesCard(const Waiting &waiting, const InvoiceActions &actions);
/// Where a card of instalments leads.
struct InstalmentActions {
    std::function<void(long number)> open; ///< to one instalment
    std::function<void()> list;            ///< to all that are open
};
/// @param side  kCustomer or kSupplier
QWidget *InstalmentsCard(const Waiting &waiting, long side, const InstalmentActions &actions);
/// @param open  called with the number of the entry that the user wants to see
QWidget *UnbalancedCard(const Waiting &waiting, const std::function<void(long)> &open);
/// A text that tells what went wrong, and what to do about it.
QWidget *FaultCard(const QString &text, const QString &advice);

QLabel *HeadingLabel(const QString &text);
QLabel *QuietLabel(const QString &text);
