#pragma once

#include <QString>
#include <functional>
#include <vector>

class QWidget;

/// One function that the desk offers.
struct DeskFunction {
    QString area; ///< one of DeskAreas()
    QString caption;
    QString icon;                       ///< as TarvoIcon takes it
    QString shortcut;                   ///< "Ctrl+Shift+C"; empty = none
    std::function<void(QWidget *)> run; ///< given the desk's window
    QString hint;                       ///< what it is for, in a line
    bool needs_company = true;          ///< false: it can be used before a company is open
};

struct DeskArea {
    QString name;
    QString icon;
    int number; ///< Ctrl and this number lead there, whichever areas exist
};

/// All areas of the program in their order.
const std::vector<DeskArea> &DeskAreas();

/// What can be used, area by area in their order. An area may have none.
std::vector<DeskFunction> DeskFunctions();

/// Whether caption, hint or area contain every word typed, whatever case and accents.
bool Matches(const DeskFunction &function, const QString &typed);

/// The text in lower case without accents, as it is compared.
QString Folded(const QString &text);
