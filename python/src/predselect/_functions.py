"""The functions: rank, model, run, describe, score."""

from __future__ import annotations

import ctypes
import os
import tempfile
from collections.abc import Callable, Mapping, Sequence
from pathlib import Path
from typing import Any, TypeVar

from . import _library as lib
from . import errors
from ._columns import is_value
from ._data import Options, Table, open_table
from ._progress import Progress
from ._results import Model, Ranking, Result, Scores
from ._state import State

_BY = {"p": 0, "lr": 1, "v": 2, "lambda": 3, "bits": 4}
_R = TypeVar("_R", bound=Result)


class Job:
    """One call: a session, the data as a table, and what becomes of its result."""

    def __init__(self, threads: int | None, progress: bool | None) -> None:
        self.session = lib.Session(threads)
        self.progress = Progress(progress)

    def open(self, data: Any, options: Options) -> Table:
        return open_table(self.session, data, options)

    def result(self, kind: type[_R], table: Table | None, name: str, *arguments: Any) -> _R:
        """Runs the job `name` of the library; raises for what it reports as an error."""
        handle = lib.Handle("result")
        out = ctypes.byref(handle._as_parameter_)
        call: Callable[[], int] = lambda: self.session.status(name, *arguments, out)
        with self.progress as watch:
            self.session.listen(watch.told if watch.wanted else None)
            status = self.session.work(call, watch.show if watch.wanted else None)
        failure = None if status == lib.OK else self.session.failure(status)
        self.session.listen(None)
        if status not in (lib.OK, lib.COMMAND_ERROR, lib.CANCELLED):
            assert failure is not None
            raise failure
        result = kind(self.session, handle, table)
        if failure is not None:
            if status == lib.COMMAND_ERROR:
                failure = errors.CommandError(result._errors() or str(failure))
            failure.result = result  # type: ignore[attr-defined]
            raise failure
        return result


def _target(target: Any) -> bytes:
    if hasattr(target, "__iter__") and not isinstance(target, (str, tuple)):
        raise errors.RequestError(
            f"target is a {type(target).__name__}; name a column of the data, and put the target there "
            'if it stands elsewhere: rank(X.assign(target=y), "target")'
        )
    return str(target).encode()


def _list(names: str | int | Sequence[str | int]) -> list[str]:
    return [str(names)] if is_value(names) else [str(name) for name in names]  # type: ignore[union-attr]


def rank(
    data: Any,
    target: str | int,
    *,
    by: str = "p",
    except_: str | int | Sequence[str | int] = (),
    top: int = 0,
    levels: Mapping[str, str] | None = None,
    weight: Any = None,
    schema: Any = None,
    null: Sequence[str] = (),
    reading: Mapping[str, Any] | None = None,
    stream: bool = False,
    name: str | None = None,
    threads: int | None = None,
    progress: bool | None = None,
) -> Ranking:
    """Ranks the columns of the data by how they go with the target, each taken alone.

    Parameters
    ----------
    data
        A data frame of any library (by ``__arrow_c_stream__``, or pandas), a dict of columns, a
        numpy array, an iterator of batches of these, or the path of a file.
    target
        The column that is to be predicted, of categories or of numbers.
    by
        What ranks: ``"p"`` (exact p-values), ``"lr"`` (likelihood ratio), ``"v"`` (Cramer's V),
        ``"lambda"`` or ``"bits"`` (mutual information).
    except_
        Columns that are no predictors.
    top
        How many are in the table; 0 for all.
    levels
        Measurement levels by column: ``"nominal"``, ``"ordinal"`` or ``"scale"``.
    weight
        The column with frequency weights, or the weights themselves.
    schema
        A Table Schema: a dict, its text, or its path.
    null
        Further texts that are missing in delimited files.
    reading
        How data are to be read, by the names of the program's options: ``{"delimiter": ";",
        "decimal": ",", "missing": {"age": [99, 999]}}``. Of data in memory only ``missing``.
    stream
        Keeps no cells in memory: files are read again on every pass, batches go to a temporary file.
    name
        What messages call the data.
    threads
        How many threads work; all processors unless given. No result depends on it.
    progress
        Whether progress is shown; None for when a run lasts and somebody looks.

    Returns
    -------
    Ranking
        Its main table has a row for each predictor: test, effect size, exact log10 p, adjusted p.
    """
    if by not in _BY:
        raise errors.RequestError(f"by is {by!r}; give {', '.join(_BY)}")
    options = Options(
        levels=levels, weight=weight, schema=schema, null=null, reading=reading, stream=stream,
        name=name,
    )
    job = Job(threads, progress)
    table = job.open(data, options)
    names, n = lib.texts(_list(except_))
    said = lib.rank_options(by=_BY[by], except_=lib.address(names), n_except=n,
                            top=lib.count("top", top))
    result = job.result(Ranking, table, "rank", table, _target(target), ctypes.byref(said))
    result._warn()
    return result


def model(
    data: Any,
    target: str | int,
    *,
    test: float = 0.3,
    training_column: str | int | None = None,
    predictors: int = 0,
    except_: str | int | Sequence[str | int] = (),
    predictions: bool = False,
    calibrate: str | None = None,
    calibration_seed: int = 1,
    pmml: str | os.PathLike[str] | None = None,
    levels: Mapping[str, str] | None = None,
    weight: Any = None,
    schema: Any = None,
    null: Sequence[str] = (),
    reading: Mapping[str, Any] | None = None,
    stream: bool = False,
    name: str | None = None,
    threads: int | None = None,
    progress: bool | None = None,
    memory: int = 0,
) -> Model:
    """Builds a Naive Bayes classifier of the target with the few predictors that serve it best.

    ``test`` is the share of the cases that test it (0: none do), ``training_column`` a column that
    is 1 in the cases that train it; ``predictors`` bounds their number; ``predictions`` adds the
    predictions to ``new_columns``; ``pmml`` writes the model for other programs; ``memory`` is what
    training cases may take, in kilobytes (0: half of what is free). ``calibrate`` makes the
    probabilities hold what they say, by "temperature" or "isotonic", by the test cases; without any
    by cross-validation, for which ``calibration_seed`` divides the training cases. The other arguments are those
    of :func:`rank`. The model itself is ``result.state``; where it was built and a file of it could not be written,
    it is in the ``result`` of the :class:`CommandError`.
    """
    options = Options(
        levels=levels, weight=weight, schema=schema, null=null, reading=reading, stream=stream,
        name=name,
    )
    job = Job(threads, progress)
    table = job.open(data, options)
    names, n = lib.texts(_list(except_))
    with tempfile.TemporaryDirectory() as folder:
        state = Path(folder) / "model.bin"
        said = lib.model_options(
            except_=lib.address(names), n_except=n,
            training_column=None if training_column is None else str(training_column).encode(),
            test=-1.0 if test <= 0 else test, predictors=lib.count("predictors", predictors),
            save_predictions=predictions,
            state_path=os.fsencode(state), pmml_path=os.fsencode(pmml) if pmml else None,
            memory=lib.count("memory", memory), calibrate=lib.calibration(calibrate),
            calibration_seed=lib.count("calibration_seed", calibration_seed),
        )
        try:
            result = job.result(Model, table, "model", table, _target(target), ctypes.byref(said))
        except errors.CommandError as failure:
            if isinstance(failure.result, Model):
                failure.result._take_state(state)
            raise
        result._take_state(state)
    result._warn()
    return result


def run(
    data: Any,
    commands: str,
    *,
    save_state: str | os.PathLike[str] | None = None,
    results: str | os.PathLike[str] | None = None,
    memory: int | str = 0,
    calibrate: str | None = None,
    calibration_seed: int = 1,
    levels: Mapping[str, str] | None = None,
    weight: Any = None,
    schema: Any = None,
    null: Sequence[str] = (),
    reading: Mapping[str, Any] | None = None,
    stream: bool = False,
    name: str | None = None,
    threads: int | None = None,
    progress: bool | None = None,
) -> Result:
    """Runs commands of the command language: ``run(data, "SELECTPRED species.")``.

    ``save_state`` is the file for the last command's state, ``results`` the folder of result
    documents, ``memory`` what cases may take in kilobytes where a command states nothing (``"auto"``
    for half of what is free). ``calibrate`` and ``calibration_seed`` are those of :func:`model`, for
    all its models. The other arguments are those of :func:`rank`. A command that reports
    an error raises :class:`CommandError`, whose ``result`` has what was done.
    """
    options = Options(
        levels=levels, weight=weight, schema=schema, null=null, reading=reading, stream=stream,
        name=name,
    )
    job = Job(threads, progress)
    table = job.open(data, options)
    said = lib.run_options(
        state_path=os.fsencode(save_state) if save_state else None,
        results_folder=os.fsencode(results) if results else None,
        memory=lib.MEMORY_AUTO if memory == "auto" else lib.count("memory", memory),
        calibrate=lib.calibration(calibrate),
        calibration_seed=lib.count("calibration_seed", calibration_seed),
    )
    result = job.result(Result, table, "run", table, commands.encode(), ctypes.byref(said))
    result._warn()
    return result


def describe(
    data: Any,
    *,
    levels: Mapping[str, str] | None = None,
    schema: Any = None,
    null: Sequence[str] = (),
    reading: Mapping[str, Any] | None = None,
    stream: bool = False,
    name: str | None = None,
    threads: int | None = None,
    progress: bool | None = None,
) -> Result:
    """Names, types, levels, valid and missing cases, ranges and categories of the columns."""
    options = Options(
        levels=levels, schema=schema, null=null, reading=reading, stream=stream, name=name,
    )
    job = Job(threads, progress)
    table = job.open(data, options)
    return job.result(Result, table, "describe", table)


def state_of(model: Any) -> State:
    """The state of what scores: itself, what a model has come to, or a file's."""
    if isinstance(model, Model):
        if model.state is None:
            raise errors.RequestError("the run ended without a model")
        model = model.state
    if isinstance(model, State):
        return model
    if not isinstance(model, (str, os.PathLike)):
        raise errors.RequestError(
            f"what is given as the model is of type {type(model).__name__}; give a State, a Model, or the path "
            "of a saved one")
    return State.load(model)


def score(
    state: State | Model | str | os.PathLike[str],
    data: Any,
    *,
    predicted: str | None = None,
    probabilities: str | None = None,
    explain: int = 0,
    levels: Mapping[str, str] | None = None,
    null: Sequence[str] = (),
    reading: Mapping[str, Any] | None = None,
    stream: bool = False,
    name: str | None = None,
    threads: int | None = None,
    progress: bool | None = None,
) -> Scores:
    """Predicts the cases of the data with a model: the result's ``to_pandas()``, ``to_polars()`` and
    ``new_columns`` have the predictions, a row a case, its tables say how new cases differ.

    ``predicted`` names the predicted value, ``probabilities`` is the root of the names of the
    probabilities ("" for none of them). ``explain`` adds what so many predictors that weighed most
    add to the log-odds of each prediction; :func:`explain` gives all of it as arrays.
    """
    known = state_of(state)
    job = Job(threads, progress)
    table = job.open(data, Options(
        levels=levels, null=null, reading=reading, stream=stream, name=name))
    said = lib.score_options(
        predicted=None if predicted is None else predicted.encode(),
        probabilities=None if probabilities is None else probabilities.encode(),
        explain=lib.count("explain", explain),
    )
    result = job.result(Scores, table, "score", table, known._handle, ctypes.byref(said))
    result._warn()
    return result
