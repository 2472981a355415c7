#!/usr/bin/env python3
"""Writes python_csv.csv: the cells of kSpreadsheetCells (tests/core/import_test.cpp)
as Python's csv module writes them (comma, minimal quoting, CR LF, UTF-8).
Run it here once; the file it writes is committed beside it."""
import csv

ROWS = [
    ["Name", "Price", "Value", "Store", "Purchase date", "Warranty", "Serial", "Colour"],
    ['Kettle, "steel"', "12.50", "10", 'Shop "A", Main St', "3/1/1999", "", "two\nlines", "red"],
    [" leading blank", '5" disk', "", "", "", "2030", "SN 9", ""],
    ["Café €", "€ 1.234,56", "ö", "", "", "", "", "blue; green"],
    ['"quoted whole"', "", "", "", "", "", "", ""],
]

with open("python_csv.csv", "w", newline="", encoding="utf-8") as f:
    csv.writer(f).writerows(ROWS)
