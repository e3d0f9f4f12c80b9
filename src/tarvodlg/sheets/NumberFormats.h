#pragma once

#include "tarvodlg/sheets/Sheet.h"

#include <map>
#include <string>
#include <string_view>

/// From which day a workbook counts.
enum class DateBase { From1900, From1904 };

/// Which number formats of a workbook show dates. Both file formats number the built-in ones alike.
class NumberFormats {
  public:
    DateBase base = DateBase::From1900;

    /// A format of the workbook's own, as "dd/mm/yyyy" or "[$-410]d mmmm yyyy;@".
    void Define(unsigned id, std::string_view code);
    bool IsDate(unsigned id) const;

    /// The cell of a number shown in a format.
    SheetCell Cell(double number, unsigned format) const;

  private:
    std::map<unsigned, bool> own_;
};

/// Whether a format shows a day; one that shows hours alone does not.
bool IsDateFormatCode(std::string_view code);

/// Day number of a serial number; 0 for one outside of the calendar.
long DayOfSerial(double serial, DateBase base);
