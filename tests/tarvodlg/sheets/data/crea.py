"""Writes the workbooks that the tests of the sheet reader read, except those that LibreOffice and Gnumeric convert from
them; see README.md."""

import datetime

import openpyxl
import xlsxwriter
import xlwt

DAY = datetime.date(2025, 12, 31)
MOMENT = datetime.datetime(2025, 12, 31, 10, 30)
ITALIAN_DATE = "[$-410]d\\ mmmm\\ yyyy;@"


def cells():
    """Every kind of cell; LibreOffice computes the formulas."""
    book = openpyxl.Workbook()
    hidden = book.active
    hidden.title = "Nascosto"
    hidden["A1"] = "non è questo"
    hidden.sheet_state = "hidden"
    sheet = book.create_sheet("Celle")
    sheet["A1"], sheet["B1"], sheet["C1"] = "perché €", 1234.5, 0.1
    sheet["A2"], sheet["B2"], sheet["C2"], sheet["D2"], sheet["E2"] = DAY, DAY, MOMENT, datetime.time(12), DAY
    sheet["A2"].number_format = "dd/mm/yyyy"
    sheet["B2"].number_format = ITALIAN_DATE
    sheet["D2"].number_format = "hh:mm"
    sheet["E2"].number_format = "mmm-yy"
    sheet["A3"], sheet["B3"], sheet["C3"], sheet["D3"], sheet["E3"] = "=B1*2", '=A1&"!"', "=1/0", "=B1>2", "=A2+1"
    sheet["E3"].number_format = "dd/mm/yyyy"
    sheet["A4"], sheet["B4"] = True, False
    sheet["C7"], sheet["H7"] = "dopo un vuoto", -3
    sheet["A8"].fill = openpyxl.styles.PatternFill("solid", fgColor="FFFF00")  # coloured and empty
    sheet["A9"], sheet["B9"] = 45.5, 1500
    sheet["A9"].number_format, sheet["B9"].number_format = '#,##0.00 "dd"', '[$€-410] #,##0.00;[Red]-0'
    sheet["A10"] = datetime.date(1900, 3, 1)
    sheet["A10"].number_format = "yyyy-mm-dd"
    book.active = 1
    book.save("celle-openpyxl.xlsx")


def counted_from_1904():
    book = xlsxwriter.Workbook("base-1904.xlsx", {"date_1904": True})
    sheet = book.add_worksheet()
    sheet.write_datetime(0, 0, datetime.datetime(2025, 12, 31), book.add_format({"num_format": "dd/mm/yyyy"}))
    book.close()
    old = xlwt.Workbook()
    old.dates_1904 = True
    style = xlwt.XFStyle()
    style.num_format_str = "DD/MM/YYYY"
    old.add_sheet("Foglio1").write(0, 0, DAY, style)
    old.save("base-1904.xls")


def many_texts():
    """So many texts that their table goes on over several records, some of one and some of two bytes a character."""
    book = xlwt.Workbook()
    sheet = book.add_sheet("Foglio1")
    for row in range(400):
        sheet.write(row, 0, f"Società n. {row} " + "x" * (row % 97))
        sheet.write(row, 1, f"Łódź {row} " + "€" * (row % 89))
    book.save("testi.xls")


cells()
counted_from_1904()
many_texts()
