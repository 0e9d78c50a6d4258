"""A user of the package, as strict typing sees one; tests/CMakeLists.txt has mypy look at it."""

from __future__ import annotations

from pathlib import Path

import numpy as np

import predselect as ps


def best(path: Path) -> list[str]:
    ranking: ps.Ranking = ps.rank(path, "species", by="bits", levels={"year": "scale"}, top=5)
    ranking.plot().save(path.with_suffix(".svg"))
    return ranking.predictors


def share_right(columns: dict[str, list[str]]) -> float:
    model = ps.model(columns, "species", test=0.2, weight=np.ones(3))
    if isinstance(model.state, ps.State):
        model.state.save("model.bin")
    return model.accuracy


def lines(commands: str) -> int:
    try:
        result: ps.Result = ps.run(Path("x.csv"), commands, save_state="x.bin")
    except ps.CommandError as failure:
        print(failure.result)
        return 0
    return len(result.text().splitlines()) + sum(len(table) for table in result.tables)


def fitted() -> list[str]:
    classifier = ps.SubsetNaiveBayes(selection="all").fit(np.zeros((4, 2)), np.arange(4) % 2)
    selector = ps.PredictorSelector(k=1).fit(np.zeros((4, 2)), np.arange(4) % 2)
    return [*map(str, classifier.classes_), str(selector)]
