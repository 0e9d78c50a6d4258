#!/usr/bin/env python3
"""Laws of saved state, across processes.

  check_state.py PROGRAM LAW      one of the functions below that begin with "law_"
"""

import csv
import json
import os
import random
import re
import subprocess
import sys
import tempfile
from pathlib import Path
from xml.etree import ElementTree

DATA = Path(__file__).resolve().parents[2] / "data"
RANKING = "SELECTPRED species BY island sex WITH bill_length_mm bill_depth_mm body_mass_g " \
          "/CRITERIA SIZE=3 SHOWUNSELECTED=5 /SCREENING STATUS=OFF /PRINT SUMMARY."
MODEL = "NAIVEBAYES species BY island sex WITH bill_length_mm bill_depth_mm body_mass_g " \
        "/SAVE PREDVAL(p) PREDPROB(q:3)."


def call(program, folder, *arguments, expect=0):
    result = subprocess.run([program, *arguments], cwd=folder, capture_output=True, text=True,
                            check=False)
    assert result.returncode == expect, (arguments, result.returncode, result.stderr)
    return result


def cells(document, subtype):
    """Values by the innermost row label and the column."""
    for table in json.loads(document)["runs"][0]["tables"]:
        if table["subtype"] == subtype:
            return {(cell["row"][-1], *cell["column"]): cell["value"] for cell in table["cells"]}
    raise AssertionError(f"no table {subtype}")


def write_parts(folder, n):
    """The cases of the penguins in random parts: each numbers its categories its own way."""
    with open(DATA / "penguins.csv", encoding="utf-8", newline="") as file:
        header, *rows = csv.reader(file)
    random.Random(20241).shuffle(rows)
    for i in range(n):
        with open(folder / f"part{i}.csv", "w", encoding="utf-8", newline="") as file:
            csv.writer(file).writerows([header, *rows[i::n]])


def law_parts_make_the_whole(program, folder):
    """Counted in eight processes, in both forms, merged and ranked: the table of the single run."""
    write_parts(folder, 8)
    states = [f"part{i}.{'bin' if i % 2 else 'xml'}" for i in range(8)]
    for i, state in enumerate(states):
        call(program, folder, "run", "--data", f"part{i}.csv", "-c", RANKING,
             "--save-state", state)
    call(program, folder, "merge", *states[:3], "-o", "some.xml")
    call(program, folder, "merge", "some.xml", *states[3:], "-o", "all.bin")
    merged = cells(call(program, folder, "inspect", "all.bin", "--format", "json").stdout, "Ranking")
    whole = cells(call(program, folder, "run", "--data", str(DATA / "penguins.csv"), "-c", RANKING,
                       "--format", "json").stdout, "PredictorSummary")
    whole = {key: value for key, value in whole.items() if value is not None}
    assert len(whole) > 20 and whole.keys() == merged.keys(), whole.keys() ^ merged.keys()
    for key, value in whole.items():
        assert abs(merged[key] - value) <= 1e-12 * max(1.0, abs(value)), key


def law_a_saved_model_scores_as_its_run_did(program, folder):
    """In both forms, from CSV and from Parquet, in memory and streamed: the same predictions."""
    for state in ("model.bin", "model.xml"):
        for file in ("run.csv", "run.parquet"):
            call(program, folder, "run", "--data", str(DATA / "penguins.csv"), "-c", MODEL,
                 "--save-state", state, "--save-data", file, "--force")
        call(program, folder, "score", "--model", state, "--data", str(DATA / "penguins.csv"),
             "--predicted", "p", "--probabilities", "q", "--save-data", "scored.csv", "--force")
        assert (folder / "run.csv").read_bytes() == (folder / "scored.csv").read_bytes()
        call(program, folder, "score", "--model", state, "--data", "run.parquet", "--stream",
             "--predicted", "s", "--probabilities", "t", "--save-data", "both.csv", "--force")
        with open(folder / "both.csv", encoding="utf-8", newline="") as file:
            rows = list(csv.DictReader(file))
        assert len(rows) == 344
        for row in rows:
            assert row["p"] == row["s"] and all(row[f"q_{k}"] == row[f"t_{k}"] for k in (1, 2, 3))


def law_equal_counts_are_known_again(program, folder):
    """Runs over the same data save the same bytes; merging knows the file, a copy, a link and the
    other form, among any number of states, and takes them where the user insists."""
    write_parts(folder, 2)
    for command, name in ((RANKING, "rank"), (MODEL, "model")):
        for state in (f"{name}.bin", f"{name}.xml"):
            for path in (state, f"later-{state}"):
                call(program, folder, "run", "--data", str(DATA / "penguins.csv"), "-c", command,
                     "--save-state", path)
            assert (folder / state).read_bytes() == (folder / f"later-{state}").read_bytes(), state
        os.symlink(f"{name}.bin", folder / f"link-{name}.bin")
        for same in (f"{name}.bin", f"./{name}.bin", f"later-{name}.bin", f"link-{name}.bin",
                     f"{name}.xml"):
            said = call(program, folder, "merge", f"{name}.bin", same, "-o", "x.bin", expect=2).stderr
            assert f"{same} cannot be added: it holds the very counts of {name}.bin" in said, said
            assert "--allow-equal" in said and not (folder / "x.bin").exists()
    call(program, folder, "run", "--data", "part0.csv", "-c", RANKING, "--save-state", "part.xml")
    merge = ["merge", "rank.bin", "part.xml", "rank.xml", "-o", "all.bin"]
    assert "rank.xml cannot be added" in call(program, folder, *merge, expect=2).stderr
    call(program, folder, *merge, "--allow-equal")
    shown = call(program, folder, "inspect", "all.bin", "--format", "json").stdout
    assert cells(shown, "Component")["Valid cases", "Value"] == 2 * 344 + 172


def unsealed(state):
    """A state without its envelope, as files of earlier days are."""
    if state.startswith(b"PSFILE"):
        return state[23:-32]
    return re.sub(rb"<\?predselect-.*?\?>\n?", b"", state)


def law_damaged_files_are_refused(program, folder):
    """Cut short or changed anywhere: one message that says which file, where and what to do, and exit
    code 3; of a file without a checksum perhaps a state that can be shown."""
    draw = random.Random(7)
    nPlaced = 0
    for command, name in ((RANKING, "rank"), (MODEL, "model")):
        for form, place in (("bin", "byte"), ("xml", "line")):
            path = folder / f"{name}.{form}"
            call(program, folder, "run", "--data", str(DATA / "penguins.csv"), "-c", command,
                 "--save-state", path.name)
            sealed = path.read_bytes()
            for trial in range(28):
                whole = sealed if trial < 3 else unsealed(sealed)
                at = draw.randrange(len(whole))
                cut = trial % 2 == 0
                changed = bytes([whole[at] ^ (1 << draw.randrange(8))])
                bad = whole[:at] if cut else whole[:at] + changed + whole[at + 1:]
                (folder / f"bad.{form}").write_bytes(bad)
                result = subprocess.run([program, "inspect", f"bad.{form}"], cwd=folder,
                                        capture_output=True, check=False)
                allowed = (3,) if cut or whole is sealed else (0, 3)
                assert result.returncode in allowed, (name, form, at, cut)
                told = rf"predselect: bad\.{form}(, {place} \d+)?: cannot be used as a state: .*\n"
                said = result.stderr.decode()
                assert result.returncode == 0 or re.fullmatch(told, said), (name, at, said)
                nPlaced += f", {place} " in said
    assert nPlaced > 70, nPlaced


def law_signed_states_are_told_from_others(program, folder):
    """Where a key is asked for: the state that was signed with it, and no other, by every command; and no
    key that is none, or that anyone may read."""
    penguins = str(DATA / "penguins.csv")
    for name, key in (("key", "0123456789abcdef\n"), ("other", "0123456789abcdeF"), ("short", "secret\n"),
                      ("empty", "\n"), ("open", "0123456789abcdef")):
        (folder / name).write_text(key, encoding="utf-8")
        (folder / name).chmod(0o604 if name == "open" else 0o600)
    for form in ("bin", "xml"):
        for text, name in ((RANKING, "rank"), (MODEL, "model")):
            state = f"{name}.{form}"
            call(program, folder, "run", "--data", penguins, "-c", text, "--save-state", f"signed-{state}",
                 "--sign-key", "key")
            call(program, folder, "run", "--data", penguins, "-c", text, "--save-state", state)
            call(program, folder, "inspect", f"signed-{state}")
            call(program, folder, "inspect", f"signed-{state}", "--verify-key", "key")
            for file, key, told in ((state, "key", "not signed"), (f"signed-{state}", "other", "with this key")):
                refused = call(program, folder, "inspect", file, "--verify-key", key, expect=3)
                assert file in refused.stderr and told in refused.stderr, refused.stderr
    signed = ["signed-rank.bin", "signed-rank.xml", "--allow-equal", "--verify-key", "key"]
    call(program, folder, "merge", *signed, "-o", "all.bin", "--sign-key", "other")
    call(program, folder, "inspect", "all.bin", "--verify-key", "other")
    model = ["--verify-key", "key"]
    for command in (["merge", "rank.bin", "signed-rank.bin", "-o", "all.bin", "--allow-equal"],
                    ["score", "--model", "model.bin", "--data", penguins],
                    ["score", "--model", "model.bin", "--data", penguins, "--dry-run"],
                    ["evaluate", "--model", "model.bin", "--data", penguins],
                    ["export", "model.bin", "-o", "m.sql"], ["view", "model.bin", "-o", "m.html"]):
        assert "not signed" in call(program, folder, *command, *model, expect=3).stderr, command
        changed = [word if word not in ("rank.bin", "model.bin") else f"signed-{word}" for word in command]
        call(program, folder, *changed, *model)
    for key, told in (("short", "6 bytes"), ("empty", "is empty"), ("open", "chmod o="), ("none", "No such file"),
                      (".", "directory")):
        refused = call(program, folder, "inspect", "rank.bin", "--verify-key", key, expect=3).stderr
        assert f"{key}: cannot be used as a key: " in refused and told in refused, refused
    refused = call(program, folder, "merge", "rank.bin", "rank.xml", "-o", "key", expect=2)
    call(program, folder, "run", "--data", penguins, "-c", RANKING, "--sign-key", "key", expect=2)


def law_a_criterion_without_ranks_is_left_out(program, folder):
    """A state may have been ranked before another criterion was asked for."""
    call(program, folder, "run", "--data", str(DATA / "penguins.csv"), "-c", RANKING,
         "--save-state", "rank.xml")
    def listed(*items):
        return [f"<Long>{len(items)}</Long>", *items]
    numbers = [f"<Long>{i}</Long>" for i in range(5)]
    sorts = ['<Object name="FSPredSort">' + 3 * "<Double>0</Double>" + f"{number}</Object>"
             for number in numbers]
    none = 5 * listed()
    ranking = 3 * listed() + listed(*sorts) + none + listed(*numbers) + none \
        + listed(*5 * ["<Double>0.5</Double>"]) + none + listed()
    document = unsealed((folder / "rank.xml").read_bytes()).decode("utf-8")
    state = "".join(line.strip() for line in document.splitlines())
    end = 22 * "<Long>0</Long>" + "</Object><Long>1</Long><Long>0</Long>"
    stage = '<Object name="FSPredictorSet"><Long>5</Long><Long>2</Long><Long>'
    assert end in state and stage + "2" in state
    state = state.replace(stage + "2", stage + "7")
    state = state.replace(end, "".join(ranking) + "</Object><Long>1</Long><Long>1</Long>")
    (folder / "some.xml").write_text(state, encoding="utf-8")
    shown = call(program, folder, "inspect", "some.xml", "--format", "json").stdout
    assert cells(shown, "Ranking")["island", "Pearson Chi-Square", "Rank"] == 1
    assert ("island", "Likelihood Ratio Chi-Square", "Rank") not in cells(shown, "Ranking")


def law_only_whole_plain_files_are_states(program, folder):
    """One component and nothing behind it; no pipe is waited for; a full disk is called that."""
    penguins = str(DATA / "penguins.csv")
    for form in ("bin", "xml"):
        (folder / f"full.{form}").symlink_to("/dev/full")
    for text, name in ((RANKING, "rank"), (MODEL, "model")):
        for form in ("bin", "xml"):
            state = f"{name}.{form}"
            call(program, folder, "run", "--data", penguins, "-c", text, "--save-state", state)
            (folder / f"two.{form}").write_bytes(2 * (folder / state).read_bytes())
            result = call(program, folder, "inspect", f"two.{form}", expect=3)
            assert "cannot be used as a state" in result.stderr, state
            result = call(program, folder, "merge", state, state, "--allow-equal", "-o",
                          f"full.{form}", expect=3)
            assert "No space left" in result.stderr, (state, result.stderr)
    os.mkfifo(folder / "pipe.bin")
    for path in ("pipe.bin", ".", "/dev/zero"):
        result = call(program, folder, "inspect", path, expect=3)
        assert "not a plain file" in result.stderr, (path, result.stderr)
    def valid(state):
        result = call(program, folder, "inspect", state, "--format", "json")
        return cells(result.stdout, "Component")["Valid cases", "Value"]
    call(program, folder, "merge", "rank.bin", "rank.xml", "-o", "rank.bin", "--allow-equal")
    assert valid("rank.bin") == 2 * valid("rank.xml") > 600


def law_user_missing_values_are_what_they_were_to_the_run(program, folder):
    """Included or excluded, with the schema at hand or without it: the predictions of the run."""
    draw = random.Random(11)
    with open(folder / "data.csv", "w", encoding="utf-8") as file:
        file.write("y,code,word,x,noise\n")
        for _ in range(400):
            y = draw.choice("pq")
            code = draw.choice((1, 2, 9) if y == "p" else (1, 1, 2))
            word = draw.choice(("red", "none", "blue") if y == "p" else ("red", "none", "none"))
            x = draw.choice((999, round(draw.random() + (y == "p"), 3)))
            file.write(f"{y},{code},{word},{x},{draw.choice('abc')}\n")
    fields = [{"name": "code", "type": "integer", "missingValues": ["9"]},
              {"name": "word", "type": "string", "missingValues": ["none"]},
              {"name": "x", "type": "number", "missingValues": ["999"]}]
    (folder / "schema.json").write_text(json.dumps({"fields": fields}), encoding="utf-8")
    schema = ["--schema", "schema.json"]
    runs = set()
    for use, built in (("INCLUDE", schema), ("EXCLUDE", schema), ("EXCLUDE", [])):
        command = f"NAIVEBAYES y BY code word noise WITH x /SUBSET EXACTSIZE=3 " \
                  f"/MISSING USERMISSING={use} /SAVE PREDVAL(p) PREDPROB(q:2)."
        call(program, folder, "run", "--data", "data.csv", *built, "-c", command, "--save-state",
             "model.bin", "--save-data", "run.csv", "--force")
        runs.add((folder / "run.csv").read_bytes())
        for known in ([], schema):
            call(program, folder, "score", "--model", "model.bin", "--data", "data.csv", *known,
                 "--predicted", "p", "--probabilities", "q", "--save-data", "scored.csv", "--force")
            assert (folder / "run.csv").read_bytes() == (folder / "scored.csv").read_bytes(), use
    assert len(runs) == 2


def law_what_xml_cannot_hold_is_said(program, folder):
    """Control characters: an error that names the place, no file, and the binary form all the same."""
    with open(folder / "odd.csv", "w", encoding="utf-8") as file:
        file.write("y,a\x01b,c\n" + 40 * "p,x,1\np,v\x02w,2\nq,z,3\nq,z,1\n")
    for text, message in (("SELECTPRED y BY ALL.", "U+0001"),
                          ("NAIVEBAYES y BY ALL.", "that an XML document cannot hold")):
        result = call(program, folder, "run", "--data", "odd.csv", "-c", text, "--save-state",
                      "odd.xml", expect=1)
        assert message in " ".join(result.stderr.split()), result.stderr
        call(program, folder, "run", "--data", "odd.csv", "-c", text, "--save-state", "odd.bin")
        call(program, folder, "inspect", "odd.bin")
        call(program, folder, "merge", "odd.bin", "odd.bin", "--allow-equal", "-o", "odd.xml",
             expect=3)
        result = call(program, folder, "run", "--data", "odd.csv", "-c", text, "--results", "out",
                      expect=1)
        named = "out/1-variables.xml" if "SELECT" in text else "subsets.xml"
        assert named in "".join(result.stderr.split()), result.stderr
    assert not (folder / "odd.xml").exists() and not (folder / "out").exists()


def law_what_does_not_fit_is_refused(program, folder):
    """Each with its own message."""
    penguins = str(DATA / "penguins.csv")
    biopsies = str(DATA / "biopsies.csv")
    for text, state in ((RANKING, "rank.bin"), (MODEL, "model.bin"),
                        (RANKING.replace("STATUS=OFF", "PCTMISSING=50"), "screened.bin"),
                        (RANKING.replace("bill_depth_mm", "flipper_length_mm"), "other.bin"),
                        (RANKING.replace("/CRIT", "/MISSING USERMISSING=INCLUDE /CRIT"), "used.bin"),
                        ("SELECTPRED species.", "year.bin")):
        call(program, folder, "run", "--data", penguins, "-c", text, "--save-state", state)
    for option, text, state in ((("--weight", "year"), RANKING, "weighted.bin"),
                                (("--weight", "flipper_length_mm"), RANKING, "heavy.bin"),
                                (("--level", "year=scale"), "SELECTPRED species.", "scale.bin")):
        call(program, folder, "run", "--data", penguins, *option, "-c", text, "--save-state", state)
    header = "island,sex,bill_length_mm,bill_depth_mm,body_mass_g\n"
    (folder / "numbers.csv").write_text(header + "1,1,40,18,4000\n", encoding="utf-8")
    (folder / "unknown.csv").write_text(header + ",,40,18,4000\n", encoding="utf-8")
    call(program, folder, "score", "--model", "model.bin", "--data", "unknown.csv", "--save-data",
         "scored.csv")  # without any value a column is of either kind
    for arguments, code, message in (
            (("merge", "rank.bin", "model.bin", "-o", "x.bin"), 2, "a ranking, the other a model"),
            (("merge", "rank.bin", "screened.bin", "-o", "x.bin"), 2, "screening rules"),
            (("merge", "rank.bin", "other.bin", "-o", "x.bin"), 2, "bill_depth_mm is another"),
            (("merge", "rank.bin", "used.bin", "-o", "x.bin"), 2, "user-missing values is another"),
            (("merge", "rank.bin", "weighted.bin", "-o", "x.bin"), 2, "weight variable is another"),
            (("merge", "heavy.bin", "weighted.bin", "-o", "x.bin"), 2, "weight variable is another"),
            (("merge", "year.bin", "scale.bin", "-o", "x.bin"), 2,
             "year is categorical in one state and scale in the other"),
            (("merge", "rank.bin", "-o", "x.bin"), 2, "two states or more"),
            (("merge", "rank.bin", "rank.bin", "-o", "x.txt"), 2, "named .bin or .xml"),
            (("inspect", "nowhere.bin"), 3, "No such file"),
            (("inspect", "rank.bin", "-o", "./rank.bin"), 2, "is the file of the state, too"),
            (("inspect", penguins), 3, "holds no saved component"),
            (("score", "--model", "rank.bin", "--data", penguins, "--save-data", "x.csv"), 2,
             "not a Naive Bayes model"),
            (("score", "--model", "model.bin", "--data", biopsies, "--save-data", "x.csv"), 2,
             "no variable"),
            (("score", "--model", "model.bin", "--data", "numbers.csv", "--save-data", "x.csv"), 2,
             "the model was built on texts"),
            (("score", "--model", "model.bin", "--data", penguins, "--save-data", "x.csv", "-o",
              "x.csv"), 2, "is the file of --save-data, too"),
            (("run", "--data", "numbers.csv", "-c", MODEL, "-o", "./numbers.csv"), 2,
             "is the file of --data, too"),
            (("run", "--data", penguins, "-c", MODEL, "--save-state", "no/where.bin"), 3,
             "no/where.bin: cannot be written")):
        result = call(program, folder, *arguments, expect=code)
        assert message in result.stderr, (arguments, result.stderr)
        assert not (folder / "x.bin").exists() and not (folder / "x.csv").exists()


def law_results_name_their_command(program, folder):
    """One set of documents a command, numbered in the order of the text; indices have names."""
    text = RANKING + "\n" + MODEL
    result = call(program, folder, "run", "--data", str(DATA / "penguins.csv"), "-c", text,
                  "--results", "out/xml", "--format", "json")
    names = sorted(path.name for path in (folder / "out" / "xml").iterdir())
    assert names == ["1-predictors.xml", "1-ranking-f.xml", "1-ranking-likelihood.xml",
                     "1-ranking-pearson.xml", "1-variables.xml", "2-subsets.xml"], names
    root = ElementTree.parse(folder / "out" / "xml" / "1-variables.xml").getroot()
    named = {p.get("predictorIndex"): p.get("variableName") for p in root.iter("Predictor")}
    ranking = ElementTree.parse(folder / "out" / "xml" / "1-ranking-f.xml").getroot()
    shown = cells(result.stdout, "PredictorSummary")
    for predictor in ranking.iter("Predictor"):
        name = named[predictor.get("predictorIndex")]
        assert shown[name, "F", "Unadjusted Sig."] == float(predictor.get("criterionValue")), name
    assert root.find("Target").get("variableName") == "species" and len(named) == 5
    assert json.loads(result.stdout)["runs"][1]["files"] == ["out/xml/2-subsets.xml"]


def main():
    program, law = sys.argv[1], globals()["law_" + sys.argv[2]]
    with tempfile.TemporaryDirectory() as folder:
        law(program, Path(folder))
    print("holds")


if __name__ == "__main__":
    main()
