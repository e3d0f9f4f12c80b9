#pragma once

#include "desk/Waiting.h"

#include <QLabel>

// The cards of the start page. They only show; the caller's layout owns them.

QWidget *InvoicesCard(const Waiting &waiting);
/// @param side  kCustomer or kSupplier
QWidget *InstalmentsCard(const Waiting &waiting, long side);
QWidget *UnbalancedCard(const Waiting &waiting);
/// A text that tells what went wrong, and what to do about it.
QWidget *FaultCard(const QString &text, const QString &advice);

QLabel *HeadingLabel(const QString &text);
QLabel *QuietLabel(const QString &text);
