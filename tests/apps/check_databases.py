#!/usr/bin/env python3
"""The program over real databases: tables and queries of SQLite, DuckDB and PostgreSQL.

Run by the Python of the private environment that `make databases` makes, whose drivers the program
takes. PostgreSQL is a server of its own in a temporary folder; exit code 77 says that the machine
has none.

  check_databases.py PROGRAM sqlite|duckdb|postgresql
"""

import glob
import os
import pwd
import shutil
import sqlite3
import subprocess
import sys
import tempfile
from pathlib import Path

SKIPPED = 77


class Check:
    def __init__(self, program: str, folder: Path):
        self.program, self.folder, self.faults = program, folder, []
        self.environment = {**os.environ, "VIRTUAL_ENV": sys.prefix}

    def run(self, *words: str, **environment: str) -> subprocess.CompletedProcess:
        return subprocess.run([self.program, *words], capture_output=True, text=True,
                              env={**self.environment, **environment}, check=False)

    def same(self, what: str, got: str, expected: str) -> None:
        if got != expected:
            self.faults.append(f"{what}\n--- expected\n{expected}\n--- got\n{got}")

    def table(self, address: str, expected: str, *more: str) -> None:
        """The data come in, in memory and streamed, and go out as CSV."""
        for storage in ([], ["--stream"]):
            out = self.folder / "out.csv"
            done = self.run("run", "--data", address, *more, *storage, "-c", "SELECTPRED c.",
                            "--save-data", str(out), "--force", "--quiet")
            got = out.read_text(encoding="utf-8") if out.exists() else done.stderr
            self.same(f"{address} {more} {storage}", got, expected)
            out.unlink(missing_ok=True)

    def refused(self, address: str, expected: str, *more: str, **environment: str) -> None:
        done = self.run("describe", address, *more, **environment)
        if done.returncode != 3 or expected not in done.stderr:
            self.faults.append(f"{address} {more}: exit {done.returncode}, lacks \"{expected}\":\n"
                               f"{done.stderr}")


def check_sqlite(check: Check) -> None:
    path = check.folder / "first.db"
    database = sqlite3.connect(path)
    database.execute('create table "a ""b""; drop" (c, n, f, late, "odd ""name")')
    # The first cells of a column do not tell what the later ones are.
    rows = [("x", 1, 1, None, "p"), ("y", 2**53 + 1, 0.5, None, None)]
    rows += [("z", i, i, None, "q") for i in range(3000)] + [("z", None, None, "end", "q")]
    database.executemany('insert into "a ""b""; drop" values (?, ?, ?, ?, ?)', rows)
    database.execute("create table people (c text, mixed, bytes blob)")
    database.execute("insert into people values ('a', 1, null), ('b', 'n.a.', x'00'), "
                     "('a', 2.5, null)")
    database.commit()
    text = lambda value: "" if value is None else str(value)
    expected = 'c,n,f,late,"odd ""name"\n' + "".join(
        ",".join([text(c), text(n), text(float(f)).removesuffix(".0") if f is not None else "",
                  text(late), text(odd)]) + "\n" for c, n, f, late, odd in rows)
    plain = check.folder / "od d%23#.db"  # letters that mean something in an address
    shutil.copy(path, plain)
    check.table(f'sqlite:{plain}?table=a "b"; drop', expected)
    check.table(f"sqlite:{plain}?table=a%20%22b%22%3B%20drop", expected)
    check.table(f"sqlite:{plain}", "c,n\nz,7\nx,1\n", "--query",
                'select c, n from "a ""b""; drop" where n in (7, 1) and f is not null '
                "and not (c = 'z' and n = 1) order by c desc;")
    done = check.run("run", "--data", f"sqlite:{plain}", "--query",
                     "select c, mixed from people", "-c", "SELECTPRED c.")
    note = 'Column "mixed" holds 1 text and 2 numbers, so all of it is read as text.'
    check.same("a mixed column", str(note in done.stderr), "True")
    check.refused(f"sqlite:{plain}?table=people", "it holds bytes (BLOB)")
    check.refused(f"sqlite:{plain}?table=peple", 'did you mean "people"?')
    check.refused(f"sqlite:{plain}", 'name one of the tables: ?table= "a "b"; drop" or "people"')
    check.refused(f"sqlite:{plain}?tabel=people", '"tabel=people" is neither table=NAME')
    check.refused(f"sqlite:{plain}?table=people", "name a table or give a query, not both",
                  "--query", "select 1")
    check.refused(f"sqlite:{plain}", "syntax error", "--query", "selec 1")
    check.refused(f"sqlite:{plain}-none?table=t", "there is no file")
    check.refused(str(plain), "a query needs a database", "--query", "select 1")
    check.refused(f"sqlite:{plain}?table=people", "pip install adbc-driver-sqlite",
                  VIRTUAL_ENV="/nowhere")
    # Reading leaves the file as it was.
    check.same("the database", str(plain.read_bytes() == path.read_bytes()), "True")


def check_duckdb(check: Check) -> None:
    import duckdb

    path = check.folder / "d.duckdb"
    database = duckdb.connect(str(path))
    database.execute("create type e as enum ('x', 'y')")
    database.execute(
        "create table t as select 'c' || (range % 3) as c, range as n, (range * 1.5)::decimal(9, 2) "
        "as d, date '2024-02-28' + (range % 2)::int as day, timestamp '2024-02-29 12:30:00' as at, "
        "range % 2 = 0 as b, if(range = 3, null, 'y')::e as e, range::float / 8 as f "
        "from range(10000)")
    database.execute("create schema s; create table s.t (c text, n int); "
                     "insert into s.t values ('q', 1), ('r', 2)")
    database.close()
    expected = "c,n,d,day,at,b,e,f\n" + "".join(
        f"c{i % 3},{i},{i * 3 // 2}.{'50' if i % 2 else '00'},2024-02-{28 + i % 2},"
        f"2024-02-29T12:30:00,{'false' if i % 2 else 'true'},{'' if i == 3 else 'y'},"
        f"{str(i / 8).removesuffix('.0')}\n" for i in range(10000))
    check.table(f"duckdb:{path}", expected)
    check.table(f"duckdb:{path}?schema=s&table=t", "c,n\nq,1\nr,2\n")
    check.table(f"duckdb:{path}", "c,k\nc0,3334\nc1,3333\n", "--query",
                "select c, count(*) as k from t where c < 'c2' group by c order by c")
    check.refused(f"duckdb:{path}?table=nothing", 'there is no table "nothing" (there is "t")')
    check.refused(f"duckdb:{path}", "type list cannot be used", "--query",
                  "select [1, 2] as c")


class Server:
    """A PostgreSQL server in a folder, run by a user who is not root, which it asks for."""

    def __init__(self, folder: Path):
        programs = sorted(glob.glob("/usr/lib/postgresql/*/bin"))
        if not programs:
            print("there is no PostgreSQL server on this machine")
            sys.exit(SKIPPED)
        self.programs, self.folder = programs[-1], folder
        self.user = pwd.getpwuid(os.getuid()).pw_name
        if os.getuid() == 0:
            self.user = "nobody"
            shutil.chown(folder, self.user)
            os.chmod(folder.parent, 0o755)
        self.call("initdb", "-D", f"{folder}/data", "-U", "tester", "-A", "trust", "--no-sync")
        self.call("pg_ctl", "-D", f"{folder}/data", "-w", "-l", f"{folder}/log", "-o",
                  f"-k {folder} -h '' -c fsync=off", "start")

    def call(self, program: str, *words: str) -> None:
        as_user = ["runuser", "-u", self.user, "--"] if os.getuid() == 0 else []
        subprocess.run([*as_user, f"{self.programs}/{program}", *words], check=True,
                       stdout=subprocess.DEVNULL, cwd=self.folder)

    def execute(self, text: str) -> None:
        self.call("psql", "-q", "-h", str(self.folder), "-U", "tester", "-d", "postgres", "-c",
                  text)

    def stop(self) -> None:
        self.call("pg_ctl", "-D", f"{self.folder}/data", "-m", "immediate", "stop")


def check_postgresql(check: Check) -> None:
    folder = check.folder / "server"
    folder.mkdir()
    server = Server(folder)
    try:
        server.execute(
            "create table t as select 'c' || (i % 3) as c, i as n, (i * 1.5)::numeric(9, 2) as d, "
            "date '2024-02-28' + i % 2 as day, timestamp '2024-02-29 12:30:00' as at, i % 2 = 0 as "
            "b, case when i <> 3 then 'y' end as e, i / 8.0::float8 as f "
            "from generate_series(0, 9999) as i")
        server.execute('create schema s; create table s."odd "" name" (c text, n numeric, k int)')
        server.execute('insert into s."odd "" name" values (\'q\', 1.5, null), (\'r\', 2, null)')
        server.execute("create table bytes as select '\\x00'::bytea as c")
        expected = "c,n,d,day,at,b,e,f\n" + "".join(
            f"c{i % 3},{i},{str(i * 1.5).removesuffix('.0')},2024-02-{28 + i % 2},"
            f"2024-02-29T12:30:00,{'false' if i % 2 else 'true'},{'' if i == 3 else 'y'},"
            f"{str(i / 8).removesuffix('.0')}\n" for i in range(10000))
        address = f"postgresql://tester:secret@/postgres?host={folder}"
        check.table(f"{address}&table=t", expected)
        check.table(f"{address}&schema=s&table=odd%20%22%20name", "c,n,k\nq,1.5,\nr,2,\n")
        check.table(address, "c,n\nc1,2.25\nc0,0\n", "--query",
                    "select c, d * 1.5 as n from t where n < 2 order by n desc")
        check.refused(f"{address}&table=T", 'did you mean "t"?')
        check.refused(f"{address}&table=bytes", "binary cannot be used")
        check.refused(f"postgresql://tester@/none?host={folder}&table=t", '"none" does not exist')
        done = check.run("describe", f"{address}&table=t", "--format", "json")
        hidden = "secret" not in done.stdout + done.stderr and "tester@" in done.stdout
        check.same("the password", str(hidden), "True")
    finally:
        server.stop()


def main() -> int:
    program, name = os.path.abspath(sys.argv[1]), sys.argv[2]
    with tempfile.TemporaryDirectory() as folder:
        check = Check(program, Path(folder))
        {"sqlite": check_sqlite, "duckdb": check_duckdb, "postgresql": check_postgresql}[name](check)
    for fault in check.faults:
        print(fault)
    return 1 if check.faults else 0


if __name__ == "__main__":
    sys.exit(main())
