#!/usr/bin/env python3
"""PredSelect from Python through its C interface alone: ranks the columns of a table, reads the
result as JSON, and takes the predictions of a classifier back as columns.

  loans.py PATH/libpredselectoperations.so.0

Any language goes the same way. Needs pyarrow, which hands tables over and takes them back.
"""

import ctypes
import json
import sys

import pyarrow

ABI_VERSION = 1  # that of the predselect.h after which this was written
LOANS = {"age": [34, 51, 27, 45, 23, 38, 29, 60, 41, 33, 26, 48, 55, 31, 44, 36],
         "income": [41, 62, 18, 55, 21, 30, 24, 48, None, 35, 19, 27, 58, 22, 39, 33],
         "home": "own own rent own rent rent rent own rent own rent own own rent own rent".split(),
         "paid": "yes yes no yes no yes no yes no yes yes no yes no yes yes".split()}
COMMANDS = b"""SELECTPRED paid WITH age income /CRITERIA PCUTOFF=1 /PRINT SUMMARY.
NAIVEBAYES paid BY home WITH age income /SUBSET NOSELECTION /SAVE PREDVAL(guess) PREDPROB(p).
"""


class Stream(ctypes.Structure):
    """struct ArrowArrayStream: five pointers, which only pyarrow and the library follow."""
    _fields_ = [(name, ctypes.c_void_p) for name in "schema next error release data".split()]


class Handle:
    """An object of the library, closed when nothing here needs it any more."""

    def __init__(self, kind):
        self._as_parameter_ = ctypes.c_void_p()  # what a function is given for this object
        self.close = getattr(library, f"predselect_{kind}_close")

    def __del__(self):
        self.close(self)


class Failure(Exception):
    """A status above 0, the library's words for it, and what was done until then."""

    def __init__(self, status, made):
        super().__init__(library.predselect_session_error(session).decode())
        self.status, self.made = status, made


def call(name, made, *arguments):
    """Calls a function whose last argument is where it leaves what it makes, and gives that."""
    out = ctypes.byref(getattr(made, "_as_parameter_", made))
    status = getattr(library, f"predselect_{name}")(session, *arguments, out)
    if status != 0:
        raise Failure(status, made)
    return made


library = ctypes.CDLL(sys.argv[1])
library.predselect_session_error.restype = ctypes.c_char_p
assert library.predselect_abi_version() == ABI_VERSION
session = Handle("session")
assert library.predselect_session_open(ctypes.byref(session._as_parameter_)) == 0

data = Stream()  # which the library takes over
pyarrow.table(LOANS).to_reader()._export_to_c(ctypes.addressof(data))
loans = call("table_open", Handle("table"), ctypes.byref(data), None)
result = call("run", Handle("result"), loans, COMMANDS, None)
document = json.loads(call("result_json", ctypes.c_char_p(), result).value)
for cell in document["runs"][0]["tables"][0]["cells"]:
    print(*cell["row"], *cell["column"], cell["text"])
columns = call("result_new_columns", Stream(), result)
predictions = pyarrow.RecordBatchReader._import_from_c(ctypes.addressof(columns)).read_all()
for loan in predictions[:3].to_pylist():
    print(loan["guess"], f"{loan['p_1']:.4f}", f"{loan['p_2']:.4f}")
try:
    call("run", Handle("result"), loans, b"SELECTPRED payd.", None)
except Failure as failure:
    print(f"Status {failure.status}:\n{failure}")
