"""The tables, schemas and files that the jobs of program_jobs.py start from."""

import json
import random
import shutil
from pathlib import Path

from check_program import DATA, write_wide_table

STATES = Path(__file__).resolve().parents[1] / "modelfiles" / "states"
TABLES = {
    "odd.csv": '\ufeff"ta""rg<et>",x & \'y\',ünïcödé 列,num,when,BY\r\n'
               '<a>,1,α,1.5,2024-02-29,u\r\n<a>,1,β,2.5,2024-03-01,v\r\n"b&""c",2,α,3.5,,u\r\n'
               '"b&""c",2,"γ, δ",nan,1969-12-31,u\r\n<a>,1,α,inf,2024-01-01,v\r\n'
               '"b&""c",2,β,9,2024-01-01,u\r\nd,,,,,\r\n,1,α,3,,v\r\nd,2,γ,-inf,,v\r\n',
    "kinds.csv": "flag,day,moment,clock,text,big,tiny\n"
                 "true,2024-01-01,2024-01-01T10:00:00,10:00:00,a,1e300,1e-300\n"
                 "false,2024-01-02,2024-01-02T11:30:00.5,11:30:00,,-1e300,0.1\n"
                 "true,,,,b,9007199254740993,-0\nfalse,1900-01-01,,23:59:59,a,12,5e-324\n",
    "infinite.csv": "y,x\na,1\na,inf\nb,NaN\nb,7\nb,-Infinity\na,2\nb,8\n",
    "weights.csv": "y,x,w\na,1,2\nb,5,-1\na,2,3\nb,6,2\nb,7,\na,1.5,0\n",
    "constant.csv": "y,x\na,1\na,2\na,3\n", "nothing.csv": "y,x\na,\nb,\n",
    "tokens.csv": "y,x\na,1\nb,-\na,.\nb,4\na,2\n", "one.csv": "y,x\na,1\n",
    "two.csv": "y,x\na,1\nb,2\n", "header.csv": "a,b\n", "empty.csv": "",
    "ragged.csv": "a,b\n1,2\n3\n", "twice.csv": "a,b,a\n1,2,3\n",
    "quote.csv": 'a,b\n"1,2\n', "blank.csv": "a,,c\n1,2,3\n", "bad.parquet": "PAR1 is not all\n",
    "bad.feather": "ARROW1\n", "table.txt": "a,b\n1,2\n",
    "odd.json": json.dumps({"fields": [
        {"name": "ta\"rg<et>", "title": "The <target>", "missingValues": ["d"],
         "categories": [{"value": "<a>", "label": "one & <only>"}]}]}),
    "notjson.json": "{", "unknown.json": '{"fields": [{"name": "z"}]}',
    "wrong.json": '{"fields": [{"name": "x", "missingValues": "none"}]}',
    "commands.txt": "* A comment.\nselectpred species by island sex\n  /print selected.\n"
                    "NAIVE species BY island /PRI CLA.\n",
    "lines.jsonl": "".join(f'{{"y": "{"pqr"[i % 3]}", "x": {i * i % 11}, "d": "2024-02-{i % 28 + 1:02}",'
                           f' "b": {"true" if i % 4 else "null"}}}\n' for i in range(60)),
    "nothing.txt": "", "text.xml": "<Object/>",
}
SURVEY = {"fields": [
    {"name": "code", "type": "integer", "title": "A code", "missingValues": [9],
     "categories": [{"value": 1, "label": "yes"}, {"value": 2, "label": "no"}]},
    {"name": "word", "type": "string", "missingValues": [{"value": "none", "label": "No answer"}]},
    {"name": "x", "type": "number", "missingValues": ["900..1000", -1]},
    {"name": "grade", "type": "integer", "categories": [1, 2, 3, 4], "categoriesOrdered": True}]}


def write_survey(path):
    """User-missing values of every kind, weights of every kind, and useless predictors."""
    draw = random.Random(31)
    names = "y,code,word,x,grade,z,same,nearly,id,rare,gone,still,w,train,yes"
    rows = [names]
    for i in range(600):
        y = draw.choice("pqr")
        cells = [y if i % 50 else "", draw.choice((1, 2, 9) if y == "p" else (1, 1, 2)),
                 draw.choice(("red", "none", "blue") if y == "q" else ("red", "none", "none")),
                 draw.choice((999, -1, round(draw.random() + (y == "r"), 3))), draw.randint(1, 4),
                 f"{draw.gauss('pqr'.index(y), 2):.9g}", "k", "ab"[i % 60 == 7], f"id{i}",
                 f"c{min(draw.randrange(80), 60)}", "", 7, draw.choice((1, 2.4, 0.4, 3, -2, "", 0)),
                 draw.choice((0, 1, 1, 2, "")), draw.choice((y, "n"))]
        rows.append(",".join(str(cell) if draw.random() > 0.03 else "" for cell in cells))
    path.write_text("\n".join(rows) + "\n", encoding="utf-8")


def write_inputs(folder):
    folder.mkdir()
    for source in (*DATA.glob("*.csv"), *DATA.glob("*.json"), *STATES.iterdir()):
        shutil.copy(source, folder)
    for name, text in TABLES.items():
        (folder / name).write_bytes(text.encode("utf-8"))
    (folder / "latin.csv").write_bytes(b"y,x\nna\xefve,1\n")
    (folder / "survey.json").write_text(json.dumps(SURVEY), encoding="utf-8")
    write_survey(folder / "survey.csv")
    write_wide_table(folder / "wide.csv", 5000, 20)
    header, *rows = (folder / "penguins.csv").read_text(encoding="utf-8").splitlines(keepends=True)
    random.Random(5).shuffle(rows)
    for i in (0, 1):
        (folder / f"part{i}.csv").write_text(header + "".join(rows[i::2]), encoding="utf-8")
    for state in STATES.iterdir():
        whole = state.read_bytes()
        (folder / f"cut-{state.name}").write_bytes(whole[:2 * len(whole) // 3])
        (folder / f"double-{state.name}").write_bytes(2 * whole)
