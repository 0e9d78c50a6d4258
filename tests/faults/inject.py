#!/usr/bin/env python3
"""Fails every call of the program to the system or to the allocator in turn, and looks what becomes
of the job.

  inject.py PROGRAM LIBRARY [--every K] [--jobs NAME,...] [--faults NAME,...]

LIBRARY is what Faults.cpp makes. A job runs once to count its calls, and then once for each call
that fails. Whatever fails, one of two ends is lawful:

  exit code 0     every output is what it is without a fault, byte for byte
  1, 2 or 3       standard error says what went wrong, and the outputs are all old or all new

and neither leaves another file, dies of a signal, hangs, or ends in std::terminate. A temporary file
whose own removal was failed may stay until the next run. An end inside a library of others is counted
apart, when its innermost frame shows that (see library_of); the files are then what they were. Prints
a line a fault and what was unlawful; exit code 1 if anything was.
"""

import argparse
import collections
import contextlib
import errno
import hashlib
import os
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

DATA = Path(__file__).resolve().parents[2] / "data"
TIME_LIMIT = 30
OLD = b"what was there before\n"
LEFTOVER = re.compile(r"(^|/)\.predselect-\d+-\d+\.tmp$")
VARIES = re.compile(rb"\n    <Timestamp>[^<]*")

# What fails: the group of calls that Faults.cpp counts, and how.
FAULTS = {
    "open EMFILE": ("open", errno.EMFILE), "open EACCES": ("open", errno.EACCES),
    "read EIO": ("read", errno.EIO), "read EINTR": ("read", errno.EINTR),
    "read short": ("read", "short"),
    "write ENOSPC": ("write", errno.ENOSPC), "write EIO": ("write", errno.EIO),
    "write EINTR": ("write", errno.EINTR), "write short": ("write", "short"),
    "sync EIO": ("sync", errno.EIO), "close EIO": ("close", errno.EIO),
    "close EINTR": ("close", errno.EINTR), "rename EACCES": ("rename", errno.EACCES),
    "rename ENOSPC": ("rename", errno.ENOSPC), "unlink EIO": ("unlink", errno.EIO),
    "mmap ENOMEM": ("mmap", errno.ENOMEM), "truncate ENOSPC": ("truncate", errno.ENOSPC),
    "stat EIO": ("stat", errno.EIO), "thread EAGAIN": ("thread", errno.EAGAIN),
    "malloc once": ("malloc", errno.ENOMEM), "malloc from there on": ("malloc", errno.ENOMEM),
}
NAIVE = ("NAIVEBAYES species BY island sex WITH bill_length_mm body_mass_g /SAVE PREDVAL PREDPROB"
         " /OUTFILE MODEL='model.xml' /PRINT SUMMARY CLASSIFICATION.")
SELECT = "SELECTPRED species BY island sex WITH bill_length_mm body_mass_g /PRINT SELECTED EXCLUDED SUMMARY /PLOT SUMMARY."

# Arguments, and the files that they write. "IN" is the folder of the inputs.
JOBS = {
    "run csv": (["run", "IN/p.csv", "-c", SELECT + "\n" + NAIVE, "--save-data", "data.csv", "--force",
                 "--save-state", "state.bin", "--results", "results", "--export", "model.json", "-o",
                 "page.html"],
                ["data.csv", "state.bin", "model.json", "model.xml", "page.html"]),
    "run csv in pieces": (["run", "IN/long.csv", "--stream", "-c", "SELECTPRED y.", "-o", "page.txt"],
                          ["page.txt"]),
    "rank csv in pieces": (["rank", "IN/long.csv", "y", "--threads", "2"], []),
    "run parquet": (["run", "IN/p.parquet", "-c", NAIVE, "--save-data", "data.parquet", "--force",
                     "--save-state", "state.xml", "-o", "page.json"],
                    ["data.parquet", "state.xml", "model.xml", "page.json"]),
    "run arrow": (["run", "IN/p.arrow", "--stream", "-c", SELECT, "--save-state", "state.xml",
                   "--results", "results"], ["state.xml"]),
    "model arrow": (["model", "IN/p.arrow", "species", "--save-model", "state.bin", "--pmml",
                     "model.xml", "--save-data", "data.arrow", "--force", "-o", "page.html"],
                    ["state.bin", "model.xml", "data.arrow", "page.html"]),
    "rank json": (["rank", "IN/p.jsonl", "species", "--format", "json"], []),
    "score csv": (["score", "IN/p.csv", "--model", "IN/m.bin", "--save-data", "data.csv", "--force",
                   "--drift", "drift.parquet", "-o", "page.txt"],
                  ["data.csv", "drift.parquet", "page.txt"]),
    "score parquet": (["score", "IN/p.parquet", "--model", "IN/m.xml"], []),
    "merge": (["merge", "IN/1.bin", "IN/2.xml", "-o", "merged.bin"], ["merged.bin"]),
    "merge xml": (["merge", "IN/1.bin", "IN/2.xml", "-o", "merged.xml"], ["merged.xml"]),
    "export pmml": (["export", "IN/m.bin", "-o", "model.pmml"], ["model.pmml"]),
    "export onnx": (["export", "IN/m.xml", "-o", "model.onnx"], ["model.onnx"]),
    "describe csv": (["describe", "IN/p.csv", "-o", "page.html"], ["page.html"]),
    "describe parquet": (["describe", "IN/p.parquet"], []),
    "describe arrow": (["describe", "IN/p.arrow", "-o", "page.json"], ["page.json"]),
}


def library_of(said):
    """Which library of others has ended the program in its own code, or let its first thread wait for
    ever, by the innermost frame of the end that is neither the C or C++ library's nor the injection's
    own; empty for the program itself, and where nothing is known."""
    for frame in said[said.index("crash") + 1:] if "crash" in said else []:
        if re.search(r"/(lib(c|stdc\+\+|gcc_s|pthread|m)\.so|libfaults)", frame):
            continue
        if "nlohmann" in frame:
            return "nlohmann::json"
        name = frame.split("(")[0].rsplit("/", 1)[-1]
        return "" if "predselect" in name else name.split(".")[0]
    return ""


def make_inputs(program, folder):
    """The tables in every format, two states to merge, and a model."""
    shutil.copy(DATA / "penguins.csv", folder / "p.csv")
    header, *rows = (folder / "p.csv").read_text(encoding="utf-8").splitlines(keepends=True)
    for i in (0, 1):
        (folder / f"{i + 1}.csv").write_text(header + "".join(rows[i::2]), encoding="utf-8")
    wide = [f"{'pqr'[i % 3]}," + ",".join(f"{(i * (j + 7)) % 97}.{i % 10}" for j in range(20)) + "\n"
            for i in range(24000)]
    (folder / "long.csv").write_text(
        "y," + ",".join(f"x{j}" for j in range(20)) + "\n" + "".join(wide), encoding="utf-8")
    steps = [["model", "p.csv", "species", "--save-model", f"m{end}"] for end in (".bin", ".xml")]
    steps += [["run", "1.csv", "-c", SELECT, "--save-state", "1.bin"],
              ["run", "2.csv", "-c", SELECT, "--save-state", "2.xml"]]
    steps += [["score", "p.csv", "--model", "m.bin", "--save-data", f"p{end}"]
              for end in (".parquet", ".arrow", ".jsonl")]
    for step in steps:
        subprocess.run([program, *step], cwd=folder, check=True, capture_output=True)


class Server:
    """The program with its libraries loaded; Faults.cpp begins main() in a child for each fault."""

    def __init__(self, given, arguments, environment):
        asked, asks = os.pipe()
        answers, answered = os.pipe()
        settings = {"LD_PRELOAD": str(given.library), "FAULT_SERVER": f"{asked},{answered}"}
        self.process = subprocess.Popen(
            [given.program, *arguments], pass_fds=(asked, answered), env={**environment, **settings},
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(asked)
        os.close(answered)
        self.asks, self.answers = os.fdopen(asks, "w"), os.fdopen(answers, "rb", buffering=0)

    def run(self, *parts):
        """The exit code, as subprocess has it; None where the job hung."""
        print(*parts, sep="\t", file=self.asks, flush=True)
        child = int(self.answers.readline())
        hung = not self.has_ended(TIME_LIMIT)
        if hung:
            os.kill(child, signal.SIGABRT)  # which tells where it waits
            if not self.has_ended(5):
                os.kill(child, signal.SIGKILL)
        status = int(self.answers.readline())
        return None if hung else os.waitstatus_to_exitcode(status)

    def has_ended(self, seconds):
        return bool(select.select([self.answers], [], [], seconds)[0])

    def close(self):
        self.asks.close()
        self.process.wait()
        self.answers.close()


def files_of(folder):
    return {str(path.relative_to(folder)): VARIES.sub(b"", path.read_bytes())
            for path in folder.rglob("*") if path.is_file()}


class Trial:
    """One job, and what it gives when nothing fails."""

    def __init__(self, given, inputs, base, name):
        self.given, self.inputs, self.base, self.name = given, inputs, base, name
        arguments, self.outputs = JOBS[name]
        self.counts = {}
        self.arguments = [argument.replace("IN/", f"{inputs}/") for argument in arguments]
        self.servers = {"malloc": [], "": []}  # idle ones
        with self.new_folder() as folder:
            done = subprocess.run([given.program, *self.arguments], cwd=folder, capture_output=True,
                                  env=self.environment(""), stdin=subprocess.DEVNULL, check=True)
            self.standard_output, self.reference = done.stdout, files_of(folder)
        # Fresh files where there were none, so that a folder of results is among them.
        self.made = set(self.reference) - set(self.outputs)

    @contextlib.contextmanager
    def new_folder(self):
        """One that holds the old outputs."""
        with tempfile.TemporaryDirectory(dir=self.base, prefix=f"{self.name}-".replace(" ", "-")) as name:
            for output in self.outputs:
                (Path(name) / output).write_bytes(OLD)
            yield Path(name)

    @staticmethod
    def environment(kind):
        environment = {**os.environ, "COLUMNS": "100"}
        if kind == "malloc":  # columns come from there, too
            environment["ARROW_DEFAULT_MEMORY_POOL"] = "system"
        return environment

    def run(self, call, at, error=0, keep=False):
        """Exit code (None: it hung), both outputs, the files that it left, and the library's log."""
        kind = "malloc" if call == "malloc" else ""
        idle = self.servers[kind]
        try:
            server = idle.pop()
        except IndexError:
            server = Server(self.given, self.arguments, self.environment(kind))
        with self.new_folder() as folder:
            logs = [folder.with_suffix(end) for end in (".log", ".log.out", ".log.err")]
            code = server.run(folder, call, at, error, int(keep), logs[0])
            said, out, err = (log.read_bytes() for log in logs)
            for log in logs:
                log.unlink()
            idle.append(server)
            return (code, out, err.decode(errors="replace"), files_of(folder),
                    said.decode(errors="replace").splitlines())

    def close(self):
        for server in sum(self.servers.values(), []):
            server.close()

    def places(self, call):
        """Which calls are to fail: all, or of those to the allocator one from each chain of callers."""
        kind = "malloc" if call == "malloc" else "open"  # which counts the others as well
        if kind not in self.counts:
            *_, said = self.run(kind, 0)
            self.counts[kind] = [(word, int(number)) for word, number in map(str.split, said)]
        if call == "malloc":
            return sorted(number for word, number in self.counts[kind] if word == "site")
        return list(range(1, dict(self.counts[kind])[call] + 1))

    def trouble(self, call, outcome):
        """Empty, or how the outcome breaks the law."""
        code, out, errors, files, said = outcome
        if code is None or code < 0:
            is_old = all(files.get(name) == OLD for name in self.outputs)
            what = "hangs" if code is None else f"dies of signal {-code}"
            return "" if library_of(said) and is_old else what
        if "terminate" in said:
            return "std::terminate"
        if code not in (0, 1, 2, 3):
            return f"exit code {code}"
        leftover = {name for name in files if LEFTOVER.search(name)}
        if leftover and call != "unlink":
            return "leaves a temporary file"
        strays = set(files) - set(self.outputs) - self.made - leftover
        if strays:
            return f"leaves {sorted(strays)[0]}"
        if code == 0:
            if {**files, **dict.fromkeys(leftover)} != {**self.reference, **dict.fromkeys(leftover)}:
                return "exit code 0, and other files"
            return "" if out == self.standard_output else "exit code 0, and another standard output"
        if not errors.strip():
            return "no message"
        if "nknown reason" in errors or "Unknown error" in errors:
            return "unknown reason"
        old = [name for name in self.outputs if files.get(name) == OLD]
        new = [name for name in self.outputs if files.get(name) == self.reference[name]]
        made = [name for name in self.made if name in files]
        if any(files[name] != self.reference[name] for name in made):
            return "an incomplete file"
        if len(old) + len(new) != len(self.outputs):
            return "an output that is neither old nor new"
        if (old or len(made) < len(self.made)) and (new or made):
            return "some outputs old, some new"
        return ""


def chosen(places, call, given):
    """One in so many; of those of the allocator, which are many and alike, one in eight times as many."""
    step = given.every * (8 if call == "malloc" and given.every > 1 else 1)
    return places[given.first % step::step]


def show(fault, counts):
    columns = [counts[end] for end in ("runs", "survived", "refused", "library", "unlawful")]
    print("|", fault, "|", " | ".join(map(str, columns)), "|", flush=True)


def inject(given, base):
    inputs = base / "in"
    inputs.mkdir()
    make_inputs(given.program, inputs)
    before = {path: hashlib.sha256(path.read_bytes()).digest() for path in inputs.iterdir()}
    trials = [Trial(given, inputs, base, name) for name in given.jobs]
    tally, found = collections.defaultdict(collections.Counter), []
    libraries = collections.Counter()
    with ThreadPoolExecutor(given.workers) as pool:
        for fault in given.faults:
            call, error = FAULTS[fault]
            keep = fault.endswith("from there on")
            work = [(trial, place) for trial in trials
                    for place in chosen(trial.places(call), call, given)]
            for (trial, place), outcome in zip(work, pool.map(
                    lambda one: one[0].run(call, one[1], error, keep), work)):
                what = trial.trouble(call, outcome)
                tally[fault]["runs"] += 1
                code, *_, said = outcome
                end = ("unlawful" if what else "survived" if code == 0 else
                       "refused" if code is not None and code > 0 else "library")
                tally[fault][end] += 1
                if end == "library":
                    how = "wait for ever" if code is None else "ended"
                    libraries[f"{how} in {library_of(said)}"] += 1
                if what:
                    found.append((fault, trial.name, place, what, outcome))
            show(fault, tally[fault])
    for trial in trials:
        trial.close()
    for path, digest in before.items():
        assert hashlib.sha256(path.read_bytes()).digest() == digest, f"{path.name} was changed"
    for how, count in libraries.most_common():
        print(f"{count} {how}")
    return tally, found


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program", type=Path)
    parser.add_argument("library", type=Path)
    parser.add_argument("--every", type=int, default=1, help="one call in so many")
    parser.add_argument("--first", type=int, default=0, help="from which on")
    parser.add_argument("--jobs", default=",".join(JOBS))
    parser.add_argument("--faults", default=",".join(FAULTS))
    parser.add_argument("--workers", type=int, default=os.cpu_count())
    parser.add_argument("--show", type=int, default=20, help="so many that broke the law")
    parser.add_argument("--frames", type=int, default=60, help="of each, so many lines")
    given = parser.parse_args()
    given.program, given.library = given.program.resolve(strict=True), given.library.resolve(strict=True)
    given.jobs, given.faults = given.jobs.split(","), given.faults.split(",")
    memory = Path("/dev/shm")
    print("| fault | injected | complete all the same | refused with a message |"
          " ended in a library | unlawful |\n| --- | ---: | ---: | ---: | ---: | ---: |")
    with tempfile.TemporaryDirectory(dir=memory if os.access(memory, os.W_OK) else None) as base:
        tally, found = inject(given, Path(base))
    total = sum((counts for counts in tally.values()), collections.Counter())
    show("all", total)
    kinds = collections.Counter((what, fault, name) for fault, name, _, what, _ in found)
    for (what, fault, name), count in kinds.most_common():
        print(f"{count} x {what}: {fault}, {name}")
    for fault, name, place, what, (code, _, errors, files, said) in found[:given.show]:
        print(f"\n{fault} {place}, {name}: {what} (exit code {code})\n  {errors.strip()[-500:]}\n"
              f"  {sorted(files)}\n  " + "\n  ".join(said[:given.frames]))
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
