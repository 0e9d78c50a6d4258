#!/usr/bin/env python3
"""Ends the program at random moments of its work, and looks what is left.

  kill.py PROGRAM [--kills N] [--seed SEED]

A job is ended by SIGKILL, SIGTERM, SIGINT, SIGHUP, SIGINT twice, a limit on the size of files, or by
the reader of its standard output going away. Then:

  - each output is what it was, or whole and new, and all of them are the one or all are the other
    (SIGKILL may fall between two renames: those are counted)
  - no other file is there; the next run in the folder ends as if nothing had been
  - the exit code is what is documented, and standard error says why (before the program has begun,
    while its libraries are loaded, the signal itself is the end)

Prints a line a way of ending; exit code 1 if anything was unlawful. No time is judged but that the
program ends at all.
"""

import argparse
import collections
import os
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

OLD = b"what was there before\n"
VARIES = re.compile(rb"\n    <Timestamp>[^<]*")
TIME_LIMIT = 120
COMMANDS = ("SELECTPRED y /CRITERIA TIMER=0. NAIVEBAYES y /SAVE PREDVAL PREDPROB"
            " /OUTFILE MODEL='model.xml' /CRITERIA TIMER=0.")
# Arguments and outputs of the jobs; each is worked at for some tenths of a second.
JOBS = {
    "run": (["run", "IN/long.csv", "-c", COMMANDS, "--save-data", "data.csv", "--force", "--save-state",
             "state.bin", "--results", "results", "--export", "model.json", "-o", "page.html"],
            ["data.csv", "state.bin", "model.xml", "model.json", "page.html"]),
    "run streamed": (["run", "IN/long.csv", "--stream", "-c", "SELECTPRED y.", "--save-state",
                      "state.xml", "-o", "page.json"], ["state.xml", "page.json"]),
    "model": (["model", "IN/long.parquet", "y", "--save-model", "state.bin", "--pmml", "model.xml",
               "--save-data", "data.parquet", "--force"],
              ["state.bin", "model.xml", "data.parquet"]),
    "score": (["score", "IN/long.csv", "--model", "IN/m.bin", "--save-data", "data.arrow", "--force",
               "--drift", "drift.csv", "-o", "page.txt"], ["data.arrow", "drift.csv", "page.txt"]),
    "describe": (["describe", "IN/long.csv", "-o", "page.html"], ["page.html"]),
    "describe shown": (["describe", "IN/long.csv", "--format", "json"], []),
}
SIGNALS = {"SIGTERM": (signal.SIGTERM,), "SIGINT": (signal.SIGINT,), "SIGHUP": (signal.SIGHUP,),
           "SIGINT twice": (signal.SIGINT, signal.SIGINT), "SIGKILL": (signal.SIGKILL,)}
ENDINGS = [*SIGNALS, "SIGXFSZ", "reader gone"]


def make_inputs(program, folder, rows):
    draw = random.Random(7)
    lines = ["y," + ",".join(f"x{j}" for j in range(12)) + ",g"]
    for i in range(rows):
        lines.append(f"{'pqr'[i % 3]}," + ",".join(f"{draw.gauss(i % 3, 2):.4f}" for _ in range(12)) +
                     f",g{draw.randrange(9)}")
    (folder / "long.csv").write_text("\n".join(lines) + "\n", encoding="utf-8")
    for step in (["model", "long.csv", "y", "--save-model", "m.bin"],
                 ["score", "long.csv", "--model", "m.bin", "--save-data", "long.parquet"]):
        subprocess.run([program, *step], cwd=folder, check=True, capture_output=True)


def dispose(ending, room):
    """In the child: no signal is ignored, and its files may be so large."""
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGPIPE, signal.SIGXFSZ):
        signal.signal(number, signal.SIG_DFL)
    if ending == "SIGXFSZ":
        resource.setrlimit(resource.RLIMIT_FSIZE, (room, room))


class Work:
    """A job: what it gives when it is left alone, and how long that takes."""

    def __init__(self, program, inputs, base, name, draw):
        arguments, self.outputs = JOBS[name]
        self.name, self.program, self.base, self.draw = name, program, base, draw
        self.arguments = [argument.replace("IN/", f"{inputs}/") for argument in arguments]
        started = time.monotonic()
        self.code, self.shown, errors, self.files = self.run(None)
        self.seconds = time.monotonic() - started
        assert self.code == 0, (name, errors)
        self.made = set(self.files) - set(self.outputs)

    def start(self, folder, ending, room):
        return subprocess.Popen(
            [self.program, *self.arguments], cwd=folder, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.PIPE,
            env={**os.environ, "COLUMNS": "100", "TMPDIR": str(folder)},
            preexec_fn=lambda: dispose(ending, room))

    def run(self, ending):
        folder = Path(tempfile.mkdtemp(dir=self.base))
        for output in self.outputs:
            (folder / output).write_bytes(OLD)
        room = self.draw.choice((0, 100, 1000, 10000, 100000))
        process = self.start(folder, ending, room)
        if ending == "reader gone":
            process.stdout.close()
            process.stdout = None
        elif ending in SIGNALS:
            time.sleep(self.draw.uniform(0, 1.1 * self.seconds))
            for number in SIGNALS[ending]:
                process.send_signal(number)
        try:
            out, errors = process.communicate(timeout=TIME_LIMIT)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()
            return None, b"", "", {}
        if ending == "SIGKILL":  # what it leaves, the next one takes away
            again = subprocess.run([self.program, "describe", str(self.arguments[1]), "-o", "last.txt"],
                                   cwd=folder, capture_output=True, check=False)
            assert again.returncode == 0, again.stderr
            (folder / "last.txt").unlink()
        files = {str(path.relative_to(folder)): VARIES.sub(b"", path.read_bytes())
                 for path in folder.rglob("*") if path.is_file()}
        stray = [path for path in folder.rglob("*") if path.is_dir() and not any(path.iterdir())]
        files.update({f"{path.relative_to(folder)}/": b"" for path in stray if ending != "SIGKILL"})
        shutil.rmtree(folder)
        return process.returncode, out or b"", errors.decode(errors="replace"), files

    def trouble(self, ending, outcome):
        """Empty, or how the outcome breaks the law; and whether the files are partly new."""
        code, _, errors, files = outcome
        if code is None:
            return "does not end", False
        old = [name for name in self.outputs if files.get(name) == OLD]
        new = [name for name in self.outputs if files.get(name) == self.files[name]]
        made = [name for name in self.made if files.get(name) == self.files[name]]
        if set(files) - set(self.outputs) - set(made):
            return f"leaves {sorted(set(files) - set(self.outputs) - set(made))[0]}", False
        if len(old) + len(new) != len(self.outputs):
            return "an output that is neither old nor new", False
        is_mixed = bool((old or len(made) < len(self.made)) and (new or made))
        # While the loader is still at work the system ends it by the signal itself.
        loading = tuple(-number for number in SIGNALS.get(ending, ()))
        allowed = {"SIGXFSZ": (1, 3), "reader gone": (3,)}.get(ending, (130, *loading))
        if code != 0 and code not in allowed:
            return f"exit code {code}", False
        if is_mixed and ending != "SIGKILL":
            return "some outputs old, some new", True
        if code == 0 and (old or len(made) < len(self.made)):
            return "exit code 0, and old files", False
        if code == 130 and errors.count("stopped at your wish") != 1:
            return "does not say why", False
        said = " ".join(errors.split())
        if ending == "SIGXFSZ" and code != 0 and not re.search(
                os.strerror(27) + "|temporary file .* could not be written", said):
            return "does not say that the file is too large", False
        return "", is_mixed


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", type=Path)
    parser.add_argument("--kills", type=int, default=1000)
    parser.add_argument("--rows", type=int, default=30000)
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 30))
    given = parser.parse_args()
    program, draw = given.program.resolve(strict=True), random.Random(given.seed)
    tally, found = collections.defaultdict(collections.Counter), []
    memory = Path("/dev/shm")
    with tempfile.TemporaryDirectory(dir=memory if os.access(memory, os.W_OK) else None) as base:
        inputs = Path(base) / "in"
        inputs.mkdir()
        make_inputs(program, inputs, given.rows)
        works = [Work(program, inputs, base, name, draw) for name in JOBS]
        for i in range(given.kills):
            ending, work = ENDINGS[i % len(ENDINGS)], draw.choice(works)
            outcome = work.run(ending)
            what, is_mixed = work.trouble(ending, outcome)
            counts = tally[ending]
            counts["kills"] += 1
            counts["unlawful" if what else "done" if outcome[0] == 0 else "ended"] += 1
            counts["mixed"] += is_mixed
            if what:
                found.append(f"{ending}, {work.name}: {what} (exit code {outcome[0]})\n"
                             f"  {outcome[2].strip()[-400:]}\n  {sorted(outcome[3])}")
    print("| ending | tried | had been done by then | ended as documented | unlawful |"
          " between two renames |\n| --- | ---: | ---: | ---: | ---: | ---: |")
    for ending in ENDINGS:
        counts = tally[ending]
        print(f"| {ending} | {counts['kills']} | {counts['done']} | {counts['ended']} |"
              f" {counts['unlawful']} | {counts['mixed']} |")
    print("\n".join(found) + (f"\nseed {given.seed}" if found else ""))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
