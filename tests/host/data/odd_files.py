#!/usr/bin/env python3
"""Files as other programs write them: each is made here, read, and must give the table, the note or
the message that stands beside it.

  odd_files.py SHOW_TABLE          checks every file with that program
  odd_files.py --write FOLDER      writes the files, and nothing else
"""
import bz2
import gzip
import json
import lzma
import pathlib
import subprocess
import sys
import tempfile

NO = None  # a missing cell
SEMICOLONS = "separated by semicolons"
PEOPLE = {"name": ["Ann", "Zoé"], "age": [41, 35]}
NUMBERS = {"a": [1, 2], "b": [3, 4]}

# A name, the bytes, what they must give: columns with cells, or a part of the message. Then the options and a
# part of the notes; without the latter there must be none.
CASES = []


def case(name, content, expected, *options, note=None):
    data = content if isinstance(content, bytes) else content.encode()
    CASES.append((name, data, expected, options, note))


# ---- Delimiters ----------------------------------------------------------------------------------
case("comma.csv", "a,b\n1,3\n2,4\n", NUMBERS)
case("semicolon.csv", "a;b\n1;3\n2;4\n", NUMBERS, note=SEMICOLONS)
case("tab.csv", "a\tb\n1\t3\n2\t4\n", NUMBERS, note="separated by tabs")
case("bar.csv", "a|b\n1|3\n2|4\n", NUMBERS, note="separated by vertical bars")
case("tab.tsv", "a\tb\n1\t3\n2\t4\n", NUMBERS)
case("comma.tsv", "a,b\n1,3\n2,4\n", NUMBERS, note="separated by commas")
case("colon.csv", "a:b\n1:3\n2:4\n", NUMBERS, "delimiter=:")
case("blank.csv", "a b\n1 3\n2 4\n", NUMBERS, "delimiter=space")
case("said.csv", "a;b\n1;3\n2;4\n", NUMBERS, "delimiter=;")
case("crlf.csv", "a;b\r\n1;3\r\n2;4\r\n", NUMBERS, note=SEMICOLONS)
case("cr.csv", "a;b\r1;3\r2;4", NUMBERS, note=SEMICOLONS)
case("commas_within.csv", "a;b\n1,x;3\n2,y;4\n", {"a": ["1,x", "2,y"], "b": [3, 4]}, note=SEMICOLONS)
case("semicolons_within.csv", "a,b\nx;y,3\nz;w,4\n", {"a": ["x;y", "z;w"], "b": [3, 4]})
case("one_column.csv", "a\n1\n2\n", {"a": [1, 2]})
case("one_column_of_texts.csv", "comment\nI like it, really\nno, not at all\n",
     "line 2, column 11: the row has more fields than the header, which has 1 field; --delimiter none")
case("one_column_said.csv", "comment\nI like it, really\nno; bad\n",
     {"comment": ["I like it, really", "no; bad"]}, "delimiter=none")
case("some_semicolons.csv", "comment\ngood\nnot; bad\n", {"comment": ["good", "not; bad"]})
case("single_row.csv", "a;b\n", {"a;b": []})
case("times.csv", "at,n\n12:30,1\n13:45,2\n", {"at": [45000, 49500], "n": [1, 2]}, note="holds times")
case("quoted_delimiters.csv", 'a;b\n"1;5";3\n"2;5";4\n', {"a": ["1;5", "2;5"], "b": [3, 4]}, note=SEMICOLONS)
case("quoted_lines.csv", 'a;b\n"x\ny";3\n"z\nw";4\n', {"a": ["x\ny", "z\nw"], "b": [3, 4]}, note=SEMICOLONS)
case("one_bad_row.csv", "a;b\n" + "1;2\n" * 20 + "1;2;3\n",
     "line 22, column 5: the row has more fields than the header, which has 2 fields")
case("short_row.csv", "a,b\n1,2\n3\n", "line 3, column 2: the row ends after 1 field; the header has 2")
case("delimiter_word.csv", "a\n1\n", "is no single character, nor tab, space or none", "delimiter=ab")

# ---- Quotes --------------------------------------------------------------------------------------
case("single_quotes.csv", "'name','age'\n'Ann, A.','41'\n'Zoé','35'\n",
     {"name": ["Ann, A.", "Zoé"], "age": [41, 35]}, note="quoted with '")
case("apostrophes.csv", "a,b\n'tis,3\nit's,4\n", {"a": ["'tis", "it's"], "b": [3, 4]})
case("no_quotes.csv", 'size,n\n"big" one,3\n5",4\n', "line 2, column 6: only a delimiter")
case("quote_none.csv", 'size,n\n"big" one,3\n5",4\n', {"size": ['"big" one', '5"'], "n": [3, 4]}, "quote=none")
case("inches.csv", 'size,n\n3",1\n5",2\n', {"size": ['3"', '5"'], "n": [1, 2]})
case("doubled.csv", 'a,b\n"say ""hi""",1\n"x",2\n', {"a": ['say "hi"', "x"], "b": [1, 2]})
case("bars_as_quotes.csv", "a,b\n|x,y|,1\n|z|,2\n", {"a": ["x,y", "z"], "b": [1, 2]}, "quote=|")

# ---- Numbers -------------------------------------------------------------------------------------
case("decimal_comma.csv", "a;b\n1,5;x\n-2,25;y\n", {"a": [1.5, -2.25], "b": ["x", "y"]},
     note="separated by semicolons, with decimal commas; --delimiter, --decimal can")
case("decimal_comma_tab.tsv", "a\tb\n1,5\t3\n,25\t4\n", {"a": [1.5, 0.25], "b": [3, 4]}, note="decimal commas")
case("decimal_comma_quoted.csv", 'a,b\n"1,5",x\n"2,25",y\n', {"a": [1.5, 2.25], "b": ["x", "y"]},
     note="decimal commas")
case("thousands_points.csv", "a;b\n1.234,5;1\n12.345.678,25;2\n", {"a": [1234.5, 12345678.25], "b": [1, 2]},
     note="with decimal commas, with points between thousands")
case("thousands_commas.csv", 'a,b\n"1,234,567",1\n999,2\n', {"a": [1234567, 999], "b": [1, 2]},
     note="with commas between thousands")
case("thousands_and_points.csv", 'a,b\n"1,234.50",1\n"12.25",2\n', {"a": [1234.5, 12.25], "b": [1, 2]},
     note="with commas between thousands")
case("thousands_blanks.csv", "a;b\n1 234,5;1\n12,25;2\n", {"a": [1234.5, 12.25], "b": [1, 2]},
     note="with decimal commas, with blanks between thousands")
case("thousands_narrow.csv", "a;b\n1\u202f234;1\n12;2\n", {"a": [1234, 12], "b": [1, 2]}, note="with blanks")
case("thousands_apostrophes.csv", "a;b\n1'234.5;1\n12.25;2\n", {"a": [1234.5, 12.25], "b": [1, 2]},
     note="with apostrophes between thousands")
case("comma_of_either_kind.csv", "a;b\n1,234;1\n5,678;2\n", {"a": ["1,234", "5,678"], "b": [1, 2]},
     note='Numbers such as "1,234" are taken as texts; --decimal , or --thousands , says')
case("comma_behind_zero.csv", "a;b\n0,749;1\n-1,582;2\n", {"a": [0.749, -1.582], "b": [1, 2]},
     note="with decimal commas")
case("comma_said_decimal.csv", "a;b\n1,234;1\n5,678;2\n", {"a": [1.234, 5.678], "b": [1, 2]}, "decimal=,",
     note=SEMICOLONS)
case("comma_said_thousands.csv", "a;b\n1,234;1\n5,678;2\n", {"a": [1234, 5678], "b": [1, 2]}, "thousands=,",
     note=SEMICOLONS)
case("same_marks.csv", "a\n1\n", "--decimal and --thousands cannot be the same mark", "decimal=,", "thousands=,")
case("phones.csv", "a,b\n617 555 123,1\n617 555 124,2\n", {"a": ["617 555 123", "617 555 124"], "b": [1, 2]})
case("points_and_commas.csv", "a;b\n1,5;2.5\n2,5;3.5\n", {"a": ["1,5", "2,5"], "b": [2.5, 3.5]}, note=SEMICOLONS)
case("dates_with_points.csv", "a;b\n31.12.2024;1,5\n01.01.2025;2,5\n",
     {"a": ["31.12.2024", "01.01.2025"], "b": [1.5, 2.5]}, note="decimal commas")
case("groups_of_two.csv", 'a,b\n"1,23,456",1\n"12,3",2\n', {"a": ["1,23,456", "12,3"], "b": [1, 2]})
case("plus_and_blanks.csv", "a;b\n 1,5 ;1\n2,5;2\n", {"a": [1.5, 2.5], "b": [1, 2]}, note="decimal commas")
case("exponents.csv", "a;b\n1,5e3;1\n2E-1;2\n", {"a": [1500, 0.2], "b": [1, 2]}, note="decimal commas")

# ---- Headers -------------------------------------------------------------------------------------
case("no_header.csv", "63,1.5,m\n37,2.5,f\n41,1.5,m\n",
     {"column1": [63, 37, 41], "column2": [1.5, 2.5, 1.5], "column3": ["m", "f", "m"]}, note="without a header")
case("no_header_semicolons.csv", "1,5;2,5\n3,5;4,5\n", {"column1": [1.5, 3.5], "column2": [2.5, 4.5]},
     note="separated by semicolons, with decimal commas, without a header")
case("no_header_repeated.csv", "1,0,0\n2,1,0\n", {"column1": [1, 2], "column2": [0, 1], "column3": [0, 0]},
     note="without a header")
case("years.csv", "2019,2020,2021\n5,6,7\n", {"2019": [5], "2020": [6], "2021": [7]},
     note="The first row, of numbers, is taken as the names")
case("years_after_a_name.csv", "id,2019,2020\nx,6,7\ny,8,9\n", {"id": ["x", "y"], "2019": [6, 8], "2020": [7, 9]})
case("years_as_data.csv", "2019,2020\n5,6\n", {"column1": [2019, 5], "column2": [2020, 6]}, "no-header")
case("years_as_names.csv", "2019,2020\n5,6\n", {"2019": [5], "2020": [6]}, "header")
case("dates_as_names.csv", "id,2024-01-01,2024-02-01\nx,6,7\n", {"id": ["x"], "2024-01-01": [6], "2024-02-01": [7]})
case("texts_only.csv", "anna,berlin\nben,bonn\n", {"anna": ["ben"], "berlin": ["bonn"]})
case("header_said.csv", "0.5,0.7\n1,2\n", {"0.5": [1], "0.7": [2]}, "header")
case("unnamed_index.csv", ",a,b\n0,1,3\n1,2,4\n", {"column1": [0, 1], **NUMBERS},
     note="What has no name in the first row is called column1")
case("unnamed_after_blanks.csv", "\n\r\n\na,\nx,1\n\ny,2\n", {"a": ["x", "y"], "column2": [1, 2]}, note="column2")
case("trailing_delimiter.csv", "a,b,\n1,3,\n2,4,\n", {**NUMBERS, "column3": [NO, NO]}, note="is called column3")
case("repeated_name.csv", "a,b,a\n1,2,3\n", 'line 1, column 5: a column named "a" is there already')
case("blank_lines_first.csv", "\n\na,b\n1,3\n2,4\n", NUMBERS)
case("no_rows.csv", "", "the file is empty")
case("no_rows_no_header.csv", "\n", "there are no rows", "no-header")
case("no_header_short.csv", "1,2\n3\n", "the first row has 2", "no-header")

# ---- Encodings -----------------------------------------------------------------------------------
TEXT = "name,age\nAnn,41\nZoé,35\n"
case("mark.csv", "\ufeff" + TEXT, PEOPLE)
case("latin.csv", TEXT.encode("latin1"), PEOPLE, note="in Windows-1252; --encoding can say otherwise")
case("windows.csv", "price,n\n5 €,1\n“7”,2\n".encode("cp1252"), {"price": ["5 €", "“7”"], "n": [1, 2]},
     note="in Windows-1252")
case("latin_said.csv", TEXT.encode("latin1"), PEOPLE, "encoding=latin1")
case("utf16le.csv", b"\xff\xfe" + TEXT.encode("utf-16le"), PEOPLE, note="in UTF-16")
case("utf16be.csv", b"\xfe\xff" + TEXT.encode("utf-16be"), PEOPLE, note="in UTF-16")
case("utf16_tabs.csv", b"\xff\xfe" + TEXT.replace(",", "\t").replace("\n", "\r\n").encode("utf-16le"), PEOPLE,
     note="separated by tabs, in UTF-16")  # a spreadsheet's "Unicode text"
case("utf16_no_mark.csv", TEXT.encode("utf-16le"), "a zero byte is not text; --encoding utf-16le")
case("utf16_said.csv", TEXT.encode("utf-16le"), PEOPLE, "encoding=utf-16le")
case("utf16_pairs.csv", b"\xff\xfe" + "a,b\n\U0001f600,1\n".encode("utf-16le"), {"a": ["\U0001f600"], "b": [1]},
     note="in UTF-16")
case("utf16_cut.csv", b"\xff\xfe" + TEXT.encode("utf-16le") + b"x", "ends within a character of UTF-16")
case("utf16_half.csv", b"\xff\xfe" + "a,b\n1,".encode("utf-16le") + b"\x00\xd8" + "\n".encode("utf-16le"),
     "half of a pair stands alone")
case("mixed.csv", TEXT.encode() + "Zoé,1\n".encode("latin1"),
     "line 4, column 4: the text is not valid UTF-8; --encoding latin1 reads")
case("late_latin.csv", ("name,n\n" + "Ann,1\n" * 60000 + "Zoé,2\n").encode("latin1"),
     "line 60002, column 4: the text is not valid UTF-8; --encoding latin1 reads")
case("zero.csv", b"a,b\n1,\0\n", "line 2, column 3: a zero byte is not text")

# ---- Packed --------------------------------------------------------------------------------------
PLAIN = b"a,b\n1,3\n2,4\n"
case("gzip.csv.gz", gzip.compress(PLAIN), NUMBERS)
case("gzip_inside.csv", gzip.compress(PLAIN), NUMBERS)
case("gzip_twice.csv", gzip.compress(PLAIN[:6]) + gzip.compress(PLAIN[6:]), NUMBERS)
case("bzip2.csv.bz2", bz2.compress(PLAIN), NUMBERS)
case("xz.csv.xz", lzma.compress(PLAIN), NUMBERS)
case("xz_twice.csv", lzma.compress(PLAIN[:6]) + lzma.compress(PLAIN[6:]), NUMBERS)
# One block, stored, as zstd and lz4 have it for what cannot be made smaller.
case("zstandard.csv.zst", b"\x28\xb5\x2f\xfd\x20" + bytes([len(PLAIN), len(PLAIN) << 3 | 1, 0, 0]) + PLAIN, NUMBERS)
case("lz4.csv.lz4", b"\x04\x22\x4d\x18\x60\x40\x82" + (len(PLAIN) | 1 << 31).to_bytes(4, "little") + PLAIN + bytes(4),
     NUMBERS)
case("not_packed.csv.gz", PLAIN, NUMBERS)
case("packed_semicolons.tsv.gz", gzip.compress(PLAIN.replace(b",", b";")), NUMBERS, note=SEMICOLONS)
case("packed_utf16.csv.gz", gzip.compress(b"\xff\xfe" + TEXT.encode("utf-16le")), PEOPLE, note="in UTF-16")
case("cut.csv.gz", gzip.compress(PLAIN)[:-12], "runcated")
case("cut.csv.xz", lzma.compress(PLAIN)[:-12], "the xz file ends too early")
case("damaged.csv.xz", lzma.compress(PLAIN)[:30] + b"xxxxxxxx" + lzma.compress(PLAIN)[38:], "damaged")
case("name_of_bzip2.csv", "BZhang,b\n1,3\n", {"BZhang": [1], "b": [3]})

# ---- Missing values ------------------------------------------------------------------------------
case("pandas_words.csv", "a,b\n1,x\n#N/A,<NA>\nn/a,None\nnan,NULL\n-1.#IND,N/A\nNaN,\n",
     {"a": [1, NO, NO, NO, NO, NO], "b": ["x", NO, NO, NO, NO, NO]})
case("words_kept.csv", "a,b\n1,None\n2,NA\n", {"a": [1, 2], "b": ["None", "NA"]}, "no-null-words")
case("code_in_numbers.csv", "a,b\n1,x\n?,y\n3,z\n4,x\n", {"a": ["1", "?", "3", "4"], "b": ["x", "y", "z", "x"]},
     note='"a" holds texts instead of numbers because of 1 of its 4 cells: "?". --missing "a=?" takes it')
case("code_said.csv", "a,b\n1,?\n?,y\n3,z\n4,x\n", {"a": [1, NO, 3, 4], "b": ["?", "y", "z", "x"]}, "missing=a=?")
case("code_of_all.csv", "a,b\n1,?\n?,y\n3,z\n4,x\n", {"a": [1, NO, 3, 4], "b": [NO, "y", "z", "x"]}, "missing=*=?,!")
case("code_of_dates.csv", "a,b\n2024-01-01,1\nnever,2\n", {"a": [19723, NO], "b": [1, 2]}, "missing=a=never",
     note="holds dates")
case("code_with_marks.csv", "a;b\n1.234,5;1\n-;2\n2,5;3\n", {"a": [1234.5, NO, 2.5], "b": [1, 2, 3]}, "missing=a=-",
     note="points between thousands")
case("few_texts.csv", "a\n" + "1\n" * 60 + "x\ny\n", {"a": ["1"] * 60 + ["x", "y"]},
     note='2 of its 62 cells: "x", "y". --missing "a=x,y" takes them')
case("mixed_codes.csv", "a\n1\nx1\n2\nx2\nx3\nx4\n", {"a": ["1", "x1", "2", "x2", "x3", "x4"]})
case("no_variable.csv", "a\n1\n", "is not VARIABLE=CODE", "missing=a")

# ---- What programs write by default --------------------------------------------------------------
case("pandas.csv", ",x,when,ok,s\n0,1.5,2024-01-01 10:00:00,True,a\n1,,2024-01-02 11:30:00,False,\n",
     {"column1": [0, 1], "x": [1.5, NO], "when": [1704103200, 1704195000], "ok": [1, 0], "s": ["a", NO]},
     note="column1")
case("polars.csv", "x,when,ok,s\n1.5,2024-01-01T10:00:00.000000,true,a\n,2024-01-02T11:30:00.000000,false,\n",
     {"x": [1.5, NO], "when": [1704103200, 1704195000], "ok": [1, 0], "s": ["a", NO]}, note="holds")
case("duckdb.csv", 'x,d,ok,s\n1.5,2024-01-01,true,"a,b"\n,2024-01-02,false,\n',
     {"x": [1.5, NO], "d": [19723, 19724], "ok": [1, 0], "s": ["a,b", NO]}, note="holds")
case("spreadsheet_us.csv", '\ufeffItem,Price,Sold\r\nPen,"$1,200.00",TRUE\r\nInk,$5.00,FALSE\r\n',
     {"Item": ["Pen", "Ink"], "Price": ["$1,200.00", "$5.00"], "Sold": [1, 0]})
case("spreadsheet_de.csv", "Artikel;Preis;Menge\r\nStift;1.200,50;3\r\nTür;5,25;4\r\n".encode("cp1252"),
     {"Artikel": ["Stift", "Tür"], "Preis": [1200.5, 5.25], "Menge": [3, 4]},
     note="separated by semicolons, with decimal commas, with points between thousands, in Windows-1252")
case("spreadsheet_fr.csv", "Article;Prix\r\nStylo;1\xa0200,50\r\nÉtui;5,25\r\n".encode("cp1252"),
     {"Article": ["Stylo", "Étui"], "Prix": [1200.5, 5.25]}, note="blanks between thousands, in Windows-1252")
case("database.csv", "id|name|total\n1|Ann|10.5\n2|\\N|20.5\n",
     {"id": [1, 2], "name": ["Ann", "\\N"], "total": [10.5, 20.5]}, note="vertical bars")
case("r.csv", '"","x","f"\n"1",1.5,"a"\n"2",NA,"b"\n', {"column1": [1, 2], "x": [1.5, NO], "f": ["a", "b"]},
     note="column1")

# ---- Names that say nothing ----------------------------------------------------------------------
case("table.txt", PLAIN, NUMBERS)
case("table.tab", PLAIN.replace(b",", b"\t"), NUMBERS)
case("table.xyz", PLAIN, "--input-format says it of any file")
case("table_said.xyz", PLAIN, NUMBERS, "input-format=csv")
case("names_like_parquet.csv", "PAR1,b\n1,3\n2,4\n", {"PAR1": [1, 2], "b": [3, 4]})
case("shop.db", b"SQLite format 3\0" + bytes(84), "shop.db reads it")
case("shop.csv", bytes(8) + b"DUCK" + bytes(84), "the file is a database; duckdb:")
case("tabs_said.dat", PLAIN.replace(b",", b"\t"), NUMBERS, "input-format=tsv")
case("format.csv", PLAIN, "known are the formats of", "input-format=xyz")
case("really_csv.parquet", PLAIN, NUMBERS, "input-format=csv")


def failure(case, folder, program):
    """What is wrong with what the program says of a file; empty for nothing."""
    name, data, expected, options, note = case
    path = folder / name
    path.write_bytes(data)
    run = subprocess.run([program, path, *options], capture_output=True, text=True)
    if run.returncode != 0:
        return f"ended with {run.returncode}: {run.stderr}"
    got = json.loads(run.stdout)
    if isinstance(expected, str):
        return "" if expected in got.get("error", "") else f"instead of {expected!r}: {got}"
    if "error" in got:
        return str(got)
    if list(got["columns"].items()) != list(expected.items()):
        return f"instead of {expected}: {got['columns']}"
    notes = "\n".join(got["notes"])
    isNoted = note in notes if note else notes == ""
    return "" if isNoted else f"notes {notes!r} instead of {note!r}"


def write(folder):
    for name, data, *_ in CASES:
        (folder / name).write_bytes(data)


def main():
    assert len({name for name, *_ in CASES}) == len(CASES)
    if sys.argv[1] == "--write":
        folder = pathlib.Path(sys.argv[2])
        folder.mkdir(parents=True, exist_ok=True)
        return write(folder)
    with tempfile.TemporaryDirectory() as folder:
        failures = [(case[0], failure(case, pathlib.Path(folder), sys.argv[1])) for case in CASES]
    failures = [(name, why) for name, why in failures if why]
    for name, why in failures:
        print(f"{name}: {why}")
    print(f"{len(CASES)} files, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
