#!/usr/bin/env python3
"""What shells complete, and the manual page, run by the shells and formatters that are there.

  check_shells.py PROGRAM
"""

import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

# What is typed, the last word being completed: what must be among the offers, what must not.
TYPED = [
    (["ra"], {"rank"}, {"run"}),
    (["--v"], {"--version"}, set()),
    (["rank", "--fo"], {"--format"}, {"--save-data"}),
    (["rank", "--format", ""], {"text", "json", "csv"}, {"rank"}),
    (["rank", "--format", "=", "js"], {"json"}, {"text"}),
    (["rank", "da"], {"data.csv"}, {"describe"}),
    (["score", "--model", "mo"], {"model.bin"}, set()),
    (["rank", "data.csv", "y", "--top", ""], set(), {"data.csv", "text"}),
    (["run", "data.csv", "-o", "pa"], {"page one.txt"}, set()),
    (["help", "SEL"], {"SELECTPRED"}, set()),
    (["help", "me"], {"merge"}, {"model.bin"}),
    (["completion", ""], {"bash", "zsh", "fish"}, {"data.csv"}),
]

BASH = """source "$1"; shift
COMP_WORDS=(predselect "$@") COMP_CWORD=$#
complete -p predselect >/dev/null || exit 1
_predselect
printf '%s\\n' "${COMPREPLY[@]}"
"""


def run(*command, **options):
    return subprocess.run(command, capture_output=True, text=True, check=False, **options)


def check_bash(script, folder):
    for words, wanted, unwanted in TYPED:
        result = run("bash", "--norc", "-c", BASH, "bash", str(script), *words, cwd=folder)
        assert result.returncode == 0 and not result.stderr, (words, result)
        offers = set(result.stdout.split("\n"))
        assert wanted <= offers and not unwanted & offers, (words, sorted(offers))


def check_verbs_have_all_options(program, scripts):
    """Every long option that a verb's help shows is in each script."""
    for verb in ("rank", "model", "describe", "score", "evaluate", "run", "inspect", "merge"):
        page = run(program, "help", verb)
        assert page.returncode == 0, page
        assert all(len(line) <= 80 for line in page.stdout.splitlines()), verb
        for line in page.stdout.splitlines():
            for word in line[:26].replace(",", " ").split():
                if not word.startswith("--") or line.startswith("  predselect"):
                    continue
                for name, text in scripts.items():
                    wanted = f"-l {word[2:]} " if name == "fish" else word.replace("-", r"\-") \
                        if name == "man" else word
                    assert wanted in text, (verb, word, name)


def main():
    program = str(Path(sys.argv[1]).resolve())
    seen = []
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        for file in ("data.csv", "model.bin", "page one.txt"):
            (folder / file).touch()
        texts = {}
        for shell in ("bash", "zsh", "fish", "man"):
            result = run(program, "completion", shell)
            assert result.returncode == 0 and result.stdout and not result.stderr, result
            texts[shell] = result.stdout
            (folder / f"script.{shell}").write_text(result.stdout, encoding="utf-8")
        check_verbs_have_all_options(program, texts)
        for tool, *arguments in (("bash", "-n", "script.bash"), ("zsh", "-n", "script.zsh"),
                                 ("fish", "--no-execute", "script.fish"),
                                 ("man", "--warnings=w", "-l", "script.man"),
                                 ("mandoc", "-Tlint", "-W", "warning", "script.man")):
            if shutil.which(tool) is None:
                continue
            result = run(tool, *arguments, cwd=folder,
                         env={**os.environ, "MANWIDTH": "80", "LC_ALL": "C.UTF-8"})
            assert result.returncode == 0 and not result.stderr, (tool, result.stderr)
            if tool == "man":
                assert "predselect rank FILE TARGET" in result.stdout, result.stdout
            seen.append(tool)
        check_bash(folder / "script.bash", folder)
    print(f"{len(TYPED)} words are completed; looked at by {', '.join(seen)}")


if __name__ == "__main__":
    main()
