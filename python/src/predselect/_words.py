"""What the library says of options, in the words of this package.

The library's texts name options as the program has them ("--delimiter none"), and what a request was about by its
name alone ("level: ...").
"""

from __future__ import annotations

import re
import shlex

# Of the program's options: the argument that does the same.
_ARGUMENTS = {
    "except": "except_", "explain": "explain", "level": "levels", "memory": "memory",
    "predicted": "predicted", "probabilities": "probabilities", "save-model": "State.save()",
    "save-state": "save_state", "training-column": "training_column",
}
_READING = ("input-format", "sheet", "query", "driver", "delimiter", "quote", "decimal", "thousands", "header",
            "encoding", "no-null-words", "missing")

_NAME = rf"--({'|'.join((*_ARGUMENTS, *_READING, 'no-header'))})\b(?!-)"
# What may follow the name of an option, where it is no word of the sentence.
_WORD = r"""(?: ("[^"\n]*"|[,.](?= )|none|auto|latin1|utf-16le|\S+(?= reads it|: known)))?"""
_EXCEPT = re.compile(r"--except ('(?:[^'\n]|'\\'')*'|[^\s'-]+)(?: --except ('(?:[^'\n]|'\\'')*'|[^\s'-]+))*")
_LEVEL = re.compile(r"(?:--|(?<=; ))level ([^\n]+?)=(nominal|ordinal|scale)\b")
_OPTION = re.compile(_NAME + _WORD)
_ABOUT = re.compile(rf"^({'|'.join((*_ARGUMENTS, *_READING))})(?=: )")


def _left_out(found: re.Match[str]) -> str:
    names = [word for word in shlex.split(found[0]) if word != "--except"]
    return "except_=[" + ", ".join(_quoted(name) for name in names) + "]"


def _quoted(text: str) -> str:
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def _said(found: re.Match[str]) -> str:
    option, word = found[1], (found[2] or "").strip('"')
    if option in _ARGUMENTS:
        return _ARGUMENTS[option] + (f"={_quoted(word)}" if word else "")
    if option == "no-header":
        return 'reading={"header": False}'
    if not word:
        return f'reading["{option}"]'
    variable, equals, codes = word.partition("=")
    if option == "missing" and equals:
        listed = ", ".join(_quoted(code) if code != "..." else code for code in codes.split(","))
        return f'reading={{"missing": {{{_quoted(variable)}: [{listed}]}}}}'
    return f'reading={{"{option}": {_quoted(word)}}}'


def in_python(text: str) -> str:
    """A text of the library, each option as an argument of this package."""
    for aside in (" (--part N)", " (on the command line --test 0)", "; --only-new leaves the column out"):
        text = text.replace(aside, "")
    text = text.replace("on the command line ", "in a call ")
    text = _EXCEPT.sub(_left_out, text)
    text = _LEVEL.sub(lambda found: f'levels={{{_quoted(found[1])}: "{found[2]}"}}', text)
    text = _OPTION.sub(_said, text)
    return _ABOUT.sub(lambda found: _ARGUMENTS.get(found[1], f'reading["{found[1]}"]'), text)
