"""Writes the list of opening balances that the workbooks of this folder are made from, with the dirt that real lists have.
See README.md."""

import datetime
import sys

import openpyxl

TITLES = ["DATA", "Note", "RAG_SOCIALE", "  PIVA", "CodFis", " SALDO ", "rel", "Codice "]


def day(year, month, number):
    return datetime.date(year, month, number)


# date, note, name, VAT number, fiscal code, balance, side, code; in the order of the titles
ROWS = [
    (day(2026, 1, 31), "", "Edilnova Cordevasco S.r.l.", 9406137340, 9406137340, 12450.3, "CLIENTE", 501),
    ("28/02/2026", "", "Carpenteria Sarvegna", "IT06908087346", "", "1.234,56", "CLIENTE", 502),
    ("31-12-25", "sentire", "Colorificio Pennavera", "07916437341", "", "€ 10,00", "FORNITORE", 12),
    ("2026-01-15", "", "Al Mestolo", "", "grbnvs71h57g337h", "1234.56", "FORNITORE", 13),
    ("=DATE(2026,3,31)", "", "Scannavò Forniture Edili di Scannavò Agata", "", "", "=1000+250.5", "CLIENTE", 503),
    (day(2026, 1, 31), "nuovo?", "Ignotelli Arredi S.r.l.", "01234567897", "", 480, "CLIENTE", 1),
    (None, None, None, None, None, None, None, None),
    (day(2026, 1, 10), "acconto", "Serralunga Tre", " 0628 8057 364 ", "", -150, " cliente ", 504),
    (day(2026, 2, 28), "", "Hartwerk Grünbichl", "DE318702641", "", 3300, "FORNITORE", 14),
    (day(2026, 2, 28), "", "", "", "", 75.5, "CLIENTE", 36),
    (day(2026, 2, 28), "", "Officine Meccaniche Tornaldi", "00770187342", "", 0, "CLIENTE", 505),
    ("31/02/2026", "", "Caseificio Prato Lungo", "02075727343", "", 99.9, "CLIENTE", 506),
    (day(2026, 2, 28), "", "Prosciuttificio Colle Alto", "06118857348", "", "da verificare", "CLIENTE", 507),
    (day(2026, 2, 28), "", "Banca Valdenza", "", "", 5000, "BANCA", 1),
    (day(2026, 1, 31), "fatt. 801", "Santerno Nord", "08092877375", "", 610, "CLIENTE", 508),
    (day(2026, 1, 31), "fatt. 802", "Santerno Nord", "08092877375", "", 610, "CLIENTE", 508),
    (day(2026, 2, 28), "", "Utensileria Marzavola S.r.l.", "02565617350", "", "=1/0", "FORNITORE", 15),
    ("", "", "TOTALE", "", "", "=SUM(F2:F17)", "", ""),
]


def main():
    book = openpyxl.Workbook()
    book.properties.creator = book.properties.lastModifiedBy = "Brenzola Forniture"
    sheet = book.active
    sheet.title = "Saldi"
    sheet.append(TITLES)
    for values in ROWS:
        sheet.append([None if value == "" else value for value in values])
    for row in sheet.iter_rows(min_row=2, min_col=1, max_col=1):
        row[0].number_format = "dd/mm/yyyy"
    for row in sheet.iter_rows(min_row=2, min_col=6, max_col=6):
        row[0].number_format = "#,##0.00"
    sheet["D8"].fill = openpyxl.styles.PatternFill("solid", fgColor="FFFF00")  # coloured and empty
    book.create_sheet("Appunti").append(["REL", "non è questo il foglio"])
    book.save(sys.argv[1])


main()
