"""The jobs by which two builds of the program are compared: every subcommand, every keyword of both
commands, good input and bad. A job runs in a folder of its own, beside "in" with its inputs."""

from dataclasses import dataclass, field

from check_program import SCALES
from program_inputs import TABLES


@dataclass
class Job:
    args: list[str]
    stdin: bytes = b""
    files: dict[str, bytes] = field(default_factory=dict)
    env: dict[str, str] = field(default_factory=dict)


def table(name, *options):
    return ["--data", f"../in/{name}", *options]


PLAIN = table("penguins.csv")
PENGUINS = [*PLAIN, "--schema", "../in/penguins.schema.json"]
SURVEY = table("survey.csv", "--schema", "../in/survey.json")
WIDE = table("wide.csv", "--weight", "w")
MIXED = f"species BY island sex year WITH {SCALES}"
CATEGORICAL = "species BY island sex year"
SCREENED = "y BY code word grade same nearly id rare gone yes WITH x z still w"
SAVED = "/SAVE PREDVAL PREDPROB /OUTFILE MODEL='m.xml'"
JSON = ["--format", "json"]
FORMATS = ("csv", "tsv", "parquet", "feather")
RANKINGS = ("PEARSONCHISQ", "LRCHISQ", "CRAMERSV", "LAMBDA")

# Commands that run, by the table that they run on.
COMMANDS = [
    (PENGUINS, [
        "SELECTPRED species.",
        f"SELECTPRED {MIXED} /CRITERIA SHOWUNSELECTED=9 /PLOT SUMMARY.",
        *(f"SELECTPRED year (MLEVEL={level}) BY species island WITH body_mass_g /PLOT SUMMARY."
          for level in "NOS"),
        "SELECTPRED body_mass_g BY species island sex /CRITERIA SHOWUNSELECTED=5.",
        "SELECTPRED body_mass_g WITH bill_length_mm TO flipper_length_mm /PLOT SUMMARY.",
        "SELECTPRED body_mass_g BY species sex WITH bill_length_mm year /CRITERIA SIZE=2.",
        "SELECTPRED species BY island island.",
        "SELECTPRED sex WITH ALL /EXCEPT VARIABLES=body_mass_g year.",
        "SELECTPRED species /EXCEPT VARIABLES=bill_length_mm TO body_mass_g.",
        *(f"SELECTPRED {model} /CRITERIA RANKING={ranking} SHOWUNSELECTED=3 /PLOT SUMMARY."
          for model in (CATEGORICAL, MIXED) for ranking in RANKINGS),
        f"SELECTPRED {MIXED} /CRITERIA TIMER=0 SIZE=3 PCUTOFF=1.",
        f"SELECTPRED {MIXED} /CRITERIA PVALUES=EXACT SHOWUNSELECTED=9 /PLOT SUMMARY.",
        "SELECTPRED body_mass_g BY species sex WITH bill_length_mm year"
        " /CRITERIA PVALUES=EXACT SIZE=2.",
        f"SELECTPRED {CATEGORICAL} /CRITERIA PVALUES=ROUNDED RANKING=LRCHISQ.",
        f"SELECTPRED {MIXED} /CRITERIA SIZE=AUTO PCUTOFF=0.000001 SHOWUNSELECTED=2.",
        *(f"SELECTPRED {target} /CRITERIA SHOWUNSELECTED=9 /PRINT EFFECTS."
          for target in (MIXED, CATEGORICAL, "body_mass_g (MLEVEL=S)")),
        *(f"SELECTPRED {CATEGORICAL} /PRINT {shown}."
          for shown in ("NONE", "CPS", "EXCLUDED", "SELECTED", "SUMMARY", "SUMMARY(LAMBDA)",
                        f"CPS EXCLUDED SUMMARY({' '.join(RANKINGS)}) SELECTED")),
        f"SELECTPRED {MIXED} /MACROVAR FACTORS=f COVARIATES=c.\n"
        "NAIVEBAYES species BY !f WITH !c.",
        "selectp species by island SEX with bill_depth_mm\n /crit size=1 /pri sel sum /mac fac=f.",
        f"NAIVEBAYES {MIXED} {SAVED}.",
        "NAIVEBAYES species /EXCEPT VARIABLES=island /SAVE PREDVAL(guess) PREDPROB(p:2).",
        "NAIVEBAYES species WITH ALL /EXCEPT VARIABLES=year /OUTFILE MODEL='m.xml'.",
        "NAIVEBAYES sex BY species /FORCE FACTORS=island COVARIATES=body_mass_g.",
        f"NAIVEBAYES species WITH {SCALES} /FORCE FACTORS=sex /SUBSET MAXSIZE=3.",
        "NAIVEBAYES species BY island /FORCE COVARIATES=bill_length_mm /SUBSET NOSELECTION.",
        *(f"NAIVEBAYES {MIXED} /SUBSET {subset} /SAVE PREDPROB(p:3) /OUTFILE MODEL='m.xml'."
          for subset in ("MAXSIZE=2", "MAXSIZE=AUTO", "MAXSIZE=3(BESTSUBSET=PSEUDOBIC)",
                         "EXACTSIZE=2", "NOSELECTION")),
        f"NAIVEBAYES {MIXED} /TRAININGSAMPLE PERCENT=70"
        " /SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA).",
        f"NAIVEBAYES {MIXED} /TRAININGSAMPLE PERCENT=3 /SUBSET NOSELECTION.",
        "NAIVEBAYES year BY species island /SUBSET NOSELECTION /SAVE PREDVAL PREDPROB.",
        *(f"NAIVEBAYES {MIXED} /CRITERIA {criteria} /OUTFILE MODEL='m.xml'."
          for criteria in ("BINS=2", "BINS=40", "TIMER=0 MEMALLOCATE=4", "MEMALLOCATE=100000")),
        *(f"NAIVEBAYES {MIXED} /PRINT {shown}."
          for shown in ("NONE", "CPS", "EXCLUDED", "SELECTED", "SUMMARY", "CLASSIFICATION",
                        "CPS SELECTED")),
        f"NAIVEBAYES {MIXED} /MACROVAR FACTORS=f COVARIATES=c /PLOT UNCERTAINTY.\n"
        "SELECTPRED sex BY !f.",
        "NAIVEBAYES species /SAVE PREDVAL(a) /PRINT NONE.\n"
        "NAIVEBAYES sex /SAVE PREDVAL(b) /PRINT NONE.\nSELECTPRED species BY a b."]),
    (table("biopsies.csv"), [
        "SELECTPRED diagnosis /CRITERIA SIZE=10 SHOWUNSELECTED=3 /MACROVAR COVARIATES=best.\n"
        "NAIVEBAYES diagnosis WITH !best /TRAININGSAMPLE PERCENT=70\n"
        f" /SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA) {SAVED}.",
        "NAIVEBAYES diagnosis /CRITERIA MEMALLOCATE=100000.",
        "SELECTPRED mean_area /PLOT SUMMARY.",
        "NAIVEBAYES diagnosis BY mean_area WITH mean_texture /FORCE FACTORS=mean_radius"
        " /TRAININGSAMPLE PERCENT=70."]),
    (SURVEY, [
        *(f"SELECTPRED {SCREENED} /SCREENING {rule} /CRITERIA SHOWUNSELECTED=20."
          for rule in ("STATUS=ON", "STATUS=OFF", "PCTMISSING=5", "PCTEQUAL=50", "PCTUNEQUAL=5",
                       "CV=1", "STDDEV=1.5",
                       "PCTMISSING=100 PCTEQUAL=100 PCTUNEQUAL=100 CV=0 STDDEV=0")),
        *(f"{command} /MISSING USERMISSING={use}." for use in ("EXCLUDE", "INCLUDE")
          for command in (f"SELECTPRED {SCREENED}", "SELECTPRED x BY code word grade WITH z",
                          f"NAIVEBAYES {SCREENED} /SUBSET NOSELECTION {SAVED}",
                          f"NAIVEBAYES code BY word WITH x z {SAVED}")),
        "NAIVEBAYES y BY code word rare WITH x z /TRAININGSAMPLE VARIABLE=train"
        " /SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA) /SAVE PREDVAL PREDPROB.",
        "NAIVEBAYES y BY same yes gone WITH still /PRINT EXCLUDED SUMMARY.",
        *(f"NAIVEBAYES {SCREENED} /SCREENING {rule} /PRINT EXCLUDED SELECTED CLASSIFICATION."
          for rule in ("STATUS=ON", "STATUS=OFF", "PCTMISSING=5", "PCTEQUAL=50", "PCTUNEQUAL=5",
                       "CV=1", "STDDEV=1.5")),
        "NAIVEBAYES y BY code nearly WITH x z /SCREENING STATUS=ON /FORCE FACTORS=id"
        " /TRAININGSAMPLE VARIABLE=train.",
        "NAIVEBAYES y BY id nearly /SCREENING PCTUNEQUAL=1.",
        "SELECTPRED y BY id nearly code /SCREENING STATUS=OFF /EXCEPT VARIABLES=word.",
        "NAIVEBAYES rare BY y yes."]),
    ([*SURVEY, "--weight", "w"], [
        f"SELECTPRED {SCREENED.removesuffix(' w')} /CRITERIA SHOWUNSELECTED=20 /PLOT SUMMARY.",
        "SELECTPRED z.",
        "NAIVEBAYES y BY code word WITH x z /TRAININGSAMPLE VARIABLE=train"
        " /SAVE PREDVAL PREDPROB."]),
    (WIDE, ["SELECTPRED y /CRITERIA SHOWUNSELECTED=40 /PLOT SUMMARY."]),
    (table("wide.csv"), [
        "NAIVEBAYES y /CRITERIA MEMALLOCATE=4 /SUBSET MAXSIZE=3 /TRAININGSAMPLE PERCENT=60"
        f" {SAVED}."]),
    (table("odd.csv", "--schema", "../in/odd.json"), [
        'SELECTPRED "ta""rg<et>" /PLOT SUMMARY.', 'SELECTPRED num BY "BY" "ünïcödé 列".',
        'NAIVEBAYES "ta""rg<et>" /SUBSET EXACTSIZE=1 /SAVE PREDVAL("the class") PREDPROB("p x":2)'
        " /OUTFILE MODEL='m.xml'."]),
    (table("kinds.csv"), ["SELECTPRED flag.", "SELECTPRED big (MLEVEL=S)."]),
]

# Commands on the penguins at the edge of what is taken, nearly all of them refused.
REFUSED = [
    "", "SELECTPRED", "SELECTPRED.", "NAIVEBAYES.", "RANK species.", "SELECTPRED speces BY island.",
    "SELECTPRED species BY island TO", "SELECTPRED species BY 'island.",
    "SELECTPRED species WITH sex.", "SELECTPRED species BY species.", "SELECTPRED species BY !f.",
    "SELECTPRED species sex.", "SELECTPRED species (MLEVEL=X).", "SELECTPRED species (MLEVEL=S).",
    "SELECTPRED species BY sex TO island.", "SELECTPRED species /EXCEPT VARIABLES=ALL.",
    "SELECTPRED species /SCREENING PCTMISSING=101 CV=-1 STATUS=MAYBE.",
    "SELECTPRED species /SCREENING.", "SELECTPRED species /CRITERIA SIZE=2 SIZE=3.",
    "SELECTPRED species\n  /CRITERIA RANKING=LRCHISK PCUTOFF=1.5 SIZE=0 TIMER=soon.",
    "SELECTPRED species /CRITERIA S=2.", "SELECTPRED species /PRINT CPS /PRINT CPS.",
    "SELECTPRED species /PRINT NONE CPS.", "SELECTPRED species /PRINT SUMMARY(PHI).",
    "SELECTPRED species /PLOT NONE.", "SELECTPRED species /MACROVAR FACTORS=f COVARIATES=f.",
    "SELECTPRED species /SAVE PREDVAL.", "SELECTPRED species /CRITERIA TIMER=0.000000000001.",
    "SELECTPRED species.\nSELECTPRED nothing.", "SELECTPRED species " + "BY island " * 30 + ".",
    "NAIVEBAYES body_mass_g.", "NAIVEBAYES species WITH sex.",
    "NAIVEBAYES species BY island /EXCEPT VARIABLES=sex.",
    *(f"NAIVEBAYES species BY island {rest}." for rest in (
        "/FORCE FACTORS=species", "/FORCE FACTORS=island", "/FORCE COVARIATES=sex",
        "/TRAININGSAMPLE PERCENT=100", "/TRAININGSAMPLE VARIABLE=sex",
        "/TRAININGSAMPLE PERCENT=50 VARIABLE=year", "/TRAININGSAMPLE PERCENT=0.01",
        "/FORCE FACTORS=sex /SUBSET MAXSIZE=1", "/SUBSET MAXSIZE=2 EXACTSIZE=2",
        "/SUBSET EXACTSIZE=70", "/SUBSET MAXSIZE=50", "/SUBSET MAXSIZE=-1",
        "/SUBSET MAXSIZE=AUTO(BESTSUBSET=TESTDATA)", "/SAVE PREDVAL(sex)",
        "/SAVE PREDVAL(p_1) PREDPROB(p:2)", "/SAVE PREDPROB(p)", "/OUTFILE MODEL=m.xml",
        "/OUTFILE MODEL='nowhere/m.xml'", "/OUTFILE MODEL='out.csv'",
        "/OUTFILE MODEL='../in/penguins.csv'", "/CRITERIA BINS=1",
        "/CRITERIA MEMALLOCATE=3.5 BINS=2.5")),
]


def run(data, text, *options, **more):
    return Job(["run", *data, *options, "-c", text], **more)


def outputs(table_form, state_form):
    return ["--save-data", f"out.{table_form}", "--save-state", f"state.{state_form}",
            "--results", "results"]


def made_first():
    """Files that other jobs start from: tables in every format, states of both commands."""
    jobs = {f"make-{name}.{form}": run(table(f"{name}.csv"), f"SELECTPRED {target} /PRINT NONE.",
                                       "--save-data", f"{name}.{form}")
            for name, target in (("penguins", "species"), ("survey", "y"), ("kinds", "flag"))
            for form in FORMATS}
    ranking = f"SELECTPRED species BY island sex WITH {SCALES} /SCREENING CV=0.01."
    counted = "NAIVEBAYES species BY island sex /SUBSET NOSELECTION."
    model = f"NAIVEBAYES {MIXED}."
    states = {"rank0.bin": (table("part0.csv"), ranking),
              "rank1.xml": (table("part1.csv"), ranking),
              "rank.bin": (PLAIN, ranking),
              "open.bin": (table("part0.csv"), ranking.replace("CV", "STDDEV")),
              "scale.bin": (table("part0.csv"), "SELECTPRED body_mass_g BY sex WITH year."),
              "cat0.xml": (table("part0.csv"), counted), "cat1.bin": (table("part1.csv"), counted),
              "model.bin": (PLAIN, model), "model.xml": (PLAIN, model),
              "coded.bin": (SURVEY, "NAIVEBAYES y BY code word WITH x z /SUBSET NOSELECTION.")}
    jobs |= {f"make-{name}": run(data, text, "--save-state", name)
             for name, (data, text) in states.items()}
    return jobs


def made(name):
    return f"../make-{name}/{name}"


def every_command():
    """Each as a page, and as a document of streamed data, with all files beside it in two forms."""
    for data, texts in COMMANDS:
        for text in texts:
            yield run(data, text, *outputs("csv", "bin"))
            yield run(data, text, *JSON, "--stream", "--threads", "2", *outputs("feather", "xml"))
    for text in REFUSED:
        yield run(PENGUINS, text, *outputs("csv", "bin"))
        yield run(PENGUINS, text, *JSON, "--quiet")


def every_table():
    """Described and worked on: the formats, and tables that are not as they should be."""
    no_table = (".json", ".xml", "commands.txt", "nothing.txt")
    tables = [f"../in/{name}" for name in (*TABLES, "latin.csv", "nowhere.csv", "penguins.csv")
              if not name.endswith(no_table)]
    tables += [made(f"{name}.{form}") for name in ("penguins", "survey", "kinds")
               for form in FORMATS]
    for path in tables:
        yield Job(["describe", "--data", path])
        yield Job(["describe", "--data", path, *JSON, "--stream"])
    for name in ("constant", "infinite", "weights", "nothing", "one", "two", "tokens", "latin"):
        yield run(table(f"{name}.csv"), "SELECTPRED y WITH x.")
        yield run(table(f"{name}.csv"), "NAIVEBAYES y WITH x.", *JSON)
    yield run(table("header.csv"), "SELECTPRED a WITH b.")
    for form in FORMATS:
        data = ["--data", made(f"survey.{form}"), "--schema", "../in/survey.json"]
        yield run(data, f"SELECTPRED {SCREENED}.", "--save-data", "out.csv")
        yield run(data, f"NAIVEBAYES {SCREENED} /SAVE PREDVAL PREDPROB.", "--stream",
                  "--save-data", f"out.{form}")


def every_option():
    for form in ("csv", "tsv", "markdown", "jsonl", "parquet", "arrow"):
        yield Job(["describe", *PENGUINS, "--top", "3", "--format", form])
        yield run(PENGUINS, "NAIVEBAYES species /PRINT CLASSIFICATION.", "--format", form,
                  "--table", "Classification", "-o", f"cells.{form}")
    for options in ([], JSON, ["-o", "page.txt"], ["--color", "always"], ["--level", "year=often"],
                    ["--level", "year=scale", "--weight", "year"], ["--level", "yaer=scale"],
                    ["--weight", "sex"]):
        yield Job(["describe", *PENGUINS, *options])
    for options in (["-o", "page.txt"], ["-o", "none/page.txt"], ["-o", "page.json", *JSON],
                    ["--color", "always"], ["--color", "sometimes"], ["--format", "xml"],
                    ["--quiet"], ["--no-progress"], ["--weight", "year"],
                    ["--weight", "body_mas_g"], ["--weight", "sex"], ["--level", "island=ordinal"],
                    ["--level", "sex=scale"], ["--save-state", "state.txt"],
                    ["--save-state", "no/state.bin"], ["--save-data", "out.txt"],
                    ["--save-data", "none/x.csv"], ["-o", "x.csv", "--save-data", "x.csv"],
                    ["--results", "../in/penguins.csv"], ["-f", "../in/commands.txt"],
                    ["--wieght", "year"], ["--memory", "2G"], ["--memory", "much"]):
        yield run(PENGUINS, "SELECTPRED species BY island.", *options)
    for args in (["run", "../in/penguins.csv", "-c", "SELECTPRED species BY island", "-c",
                  "NAIVEBAYES species BY island."],
                 ["run", *PLAIN, "-c", "SELECTPRED species BY island. NAIV species BY island."],
                 ["run", *PLAIN, "../in/penguins.csv", "-c", "x"], ["describe", "../in/kinds.csv"],
                 ["run", "-c", "SELECTPRED a. NAIVEBAYES b.", "-f", "x"]):
        yield Job(args)
    for options in ([], JSON, ["-o", "page.html"], ["--top", "2"], ["--by", "bits"], ["--by", "lr"], ["--by", "chi"],
                    ["--except", "sex"], ["--except", "six"], ["--show-command"], ["--quiet"],
                    ["-o", "page.txt", "--top", "0"], ["--weight", "year", "--stream"]):
        yield Job(["rank", *PENGUINS, "species", *options])
    for form in ("csv", "tsv", "jsonl", "markdown"):
        yield Job(["rank", *SURVEY, "y", "--format", form])
    for name in ("r.csv", "r.tsv", "r.jsonl", "r.md", "r.json", "r.parquet", "r.feather"):
        yield Job(["rank", *PENGUINS, "species", "-o", name, "--top", "3"])
    for target in ("y", "x", "name", "gone", "nothing"):
        yield Job(["rank", *SURVEY, target])
        yield Job(["model", *SURVEY, target])
    for options in ([], JSON, ["--format", "html"], ["--test", "0"], ["--test", "1"], ["--predictors", "2"],
                    ["--training-column", "year"], ["--training-column", "sex"],
                    ["--except", "sex", "--weight", "year"], ["--show-command"],
                    ["--save-model", "m.bin", "--pmml", "m.xml", "--save-data", "out.csv"],
                    ["--pmml", "m.xml", "--save-model", "m.xml"],
                    ["--save-data", "new.csv", "--only-new", "--stream"]):
        yield Job(["model", *PENGUINS, "species", *options])
    for verb, target in (("describe", []), ("rank", ["y"]), ("model", ["y", "--test", "0"])):
        yield Job([verb, "../in/lines.jsonl", *target])
        yield Job([verb, "-", "--input-format", "jsonl", *target, *JSON],
                  stdin=TABLES["lines.jsonl"].encode())
    for options in ([], JSON, ["-o", "page.txt"], ["--save-data", "../in/penguins.csv"]):
        yield run(PENGUINS, "SELECTPRED species. NAIVEBAYES speces.", "--dry-run", *options)
    yield Job(["rank", *PENGUINS, "species", "--dry-run", "--no-pager"])
    for verb in (["describe"], ["inspect"], ["rank", "y"]):
        yield Job([verb[0], "nowhere", *verb[1:], "--format", "csv", "--table", "Rankin"])
    for width in ("20", "60", "200"):
        yield run(PENGUINS, f"SELECTPRED {MIXED} /PLOT SUMMARY.", env={"COLUMNS": width})
    yield run(table("tokens.csv", "--null", "-", "--null", "."), "SELECTPRED y WITH x.")
    for options in (["--missing", "x=-,."], ["--missing", "*=a,2"], ["--missing", "gone=1"],
                    ["--missing", "x"], ["--no-null-words"], ["--no-header"], ["--delimiter", ";"],
                    ["--decimal", ","], ["--encoding", "latin1"], ["--encoding", "ebcdic"],
                    ["--input-format", "tsv"], ["--quote", "none", "--thousands", "space"]):
        yield run(table("tokens.csv", *options), "SELECTPRED y WITH x.")
    for path in ("../in/to*.csv", "../in/{tokens,one}.csv", "../in/gone*.csv"):
        yield run(["--data", path], "SELECTPRED y WITH x.")
    for name in ("notjson.json", "unknown.json", "wrong.json", "nowhere.json"):
        yield run(table("two.csv", "--schema", f"../in/{name}"), "SELECTPRED y WITH x.")
    cells = b"y,x,z\n" + 9 * b"a,1,u\nb,2,v\na,2,v\n"
    for options in ([], ["--stream"]):
        yield run(["--data", "-", *options], "SELECTPRED y BY x.", stdin=cells)
    for name in ("../in/commands.txt", "../in/nothing.txt", "../in/nowhere.txt", "-"):
        yield Job(["run", *PLAIN, "-f", name], stdin=b"SELECTPRED species /PRINT SELECTED.")
    for memory in ("4", "1.5m", "auto", "3"):
        yield run(table("wide.csv"), "NAIVEBAYES y /SUBSET MAXSIZE=3.", "--memory", memory,
                  "--save-state", "state.bin")
    for options in (["x.csv"], ["x.csv", "--force"], ["new.csv"], ["new.tsv"], ["new.parquet"],
                    ["new.csv", "--only-new"], ["new.tsv", "--only-new", "--id", "z", "x"],
                    ["new.feather", "--only-new", "--id", "x", "--id", "y"], ["new.csv", "--id", "x"],
                    ["new.csv", "--only-new", "--id", "X", "x"],
                    ["new.csv", "--only-new", "--id", "xx"], ["there.csv"], ["there.csv", "--force"]):
        for text in ("NAIVEBAYES y /SAVE PREDVAL.", "SELECTPRED y."):
            yield run(["--data", "x.csv"], text, "--save-data", *options,
                      files={"x.csv": cells, "there.csv": b"mine"})
    yield run(["--data", "x.csv"], "SELECTPRED y.", "--force", "--only-new", files={"x.csv": cells})
    yield run(table("wide.csv"), "NAIVEBAYES y /CRITERIA MEMALLOCATE=4.", "--save-data", "out.csv",
              env={"TMPDIR": "none"})
    for args in ([], ["--help"], ["--version"], ["--wrong"], ["explain"], ["run"], ["run", *PLAIN],
                 ["run", "-c", "x"], ["describe"], ["inspect"], ["score", *PLAIN], ["merge"]):
        yield Job(args)
    for command in ("run", "rank", "model", "describe", "inspect", "score", "evaluate", "merge",
                    "export"):
        yield Job([command, "--help"])
    for topic in ("", "view", "help", "completion", "selectpred", "NAIVEBAYES", "nothing"):
        yield Job(["help", *topic.split()])
    for shell in ("bash", "zsh", "fish", "man", "ksh"):
        yield Job(["completion", shell])


def every_state():
    kept = [f"../in/{damage}{name}" for name in ("feature.bin", "feature.xml", "naive.bin",
                                                 "naive.xml") for damage in ("", "cut-", "double-")]
    new = [made(name) for name in ("rank0.bin", "rank1.xml", "rank.bin", "scale.bin", "cat0.xml",
                                   "cat1.bin", "model.bin", "model.xml", "coded.bin")]
    for name in (*kept, *new, "../in/text.xml", "../in/empty.csv", "../in/nowhere.bin", "../in"):
        yield Job(["inspect", name])
        yield Job(["inspect", name, *JSON, "-o", "page.json"])
        yield Job(["view", name, "-o", "page.html"])
    for names in (("rank0.bin", "rank1.xml"), ("rank1.xml", "rank0.bin", "rank.bin"),
                  ("cat0.xml", "cat1.bin"), ("rank0.bin", "cat1.bin"), ("rank0.bin", "open.bin"),
                  ("rank0.bin", "scale.bin"), ("model.bin", "model.xml"),
                  ("model.bin", "cat1.bin"), ("rank0.bin",)):
        for form in ("bin", "xml"):
            yield Job(["merge", *map(made, names), "-o", f"all.{form}"])
    for model in ("model.bin", "coded.bin", "cat1.bin", "rank0.bin"):
        for ending in ("pmml", "xml", "onnx", "sql", "c", "json", "txt"):
            yield Job(["export", made(model), "-o", f"model.{ending}", "--table", "a \"b\""])
    for to in ("sql", "json", "xls"):
        yield Job(["export", made("model.xml"), "-o", "model.txt", "--to", to, "--quiet"])
    for text in ("NAIVEBAYES species.", "SELECTPRED species."):
        yield run(PENGUINS, text, "--export", "model.onnx", "--save-state", "state.bin")
    yield Job(["model", *PENGUINS, "species", "--export", "model.json"])
    yield Job(["merge", made("rank0.bin"), "../in/cut-feature.bin", "-o", "all.bin"])
    yield Job(["merge", made("rank0.bin"), made("rank0.bin"), "-o", "all.txt"])
    for model in ("model.bin", "model.xml", "cat1.bin"):
        for form in FORMATS:
            score = ["score", "--model", made(model), "--data", made(f"penguins.{form}")]
            yield Job([*score, "--save-data", "out.csv"])
            yield Job([*score, "--save-data", "out.feather", *JSON, "--stream", "--predicted",
                       "guess", "--probabilities", "p"])
    for options in ([], ["--schema", "../in/survey.json"], ["--threads", "0"], ["--probabilities", ""],
                    ["--predicted", "y"], ["--predicted", "q_1", "--probabilities", "q"],
                    ["--level", "x=nominal"], ["--quiet"]):
        yield Job(["score", "--model", made("coded.bin"), *table("survey.csv"), "--save-data",
                   "out.csv", *options])
    forms = ("tsv", "jsonl", "markdown", "parquet", "arrow", "html")
    for options in ([], ["--dry-run"], ["--dry-run", *JSON], ["-o", "out.jsonl"], ["-o", "out.md"],
                    *(["--format", form] for form in forms)):
        yield Job(["score", "--model", made("model.bin"), *PLAIN, *options])
    yield Job(["score", "--model", made("model.bin"), *table("survey.csv"), "--dry-run"])
    for options in ([], JSON, ["-o", "out.md"], ["--format", "csv", "--table", "confusionmatrix"],
                    ["--weight", "year"], ["--format", "html"], ["--stream", "--quiet"]):
        yield Job(["evaluate", "--model", made("model.bin"), *PLAIN, *options])
    for name, options in (("survey.csv", ["--weight", "w"]), ("survey.csv", ["--level", "x=nominal"]),
                          ("biopsies.csv", []), ("header.csv", [])):
        yield Job(["evaluate", "--model", made("coded.bin"), *table(name), *options])
    yield Job(["evaluate", "--model", made("rank.bin"), *PLAIN])
    for options in (["--cross-validate", "5"], ["--cross-validate", "3", "--repeats", "2", *JSON],
                    ["--cross-validate", "400"], ["--cross-validate", "1"],
                    ["--cross-validate", "5", "--test", "0.2"], ["--seed", "2"],
                    ["--cross-validate", "4", "--seed", "2", "--format", "csv", "--table", "Folds"]):
        yield Job(["model", *PENGUINS, "species", *options])
    yield run(table("survey.csv", "--weight", "w"), "NAIVEBAYES y BY code word WITH x z /FORCE FACTORS=grade"
              " /CROSSVALIDATION FOLDS=4 /PRINT EVALUATION SUMMARY.")
    for method in ("temperature", "isotonic", "platt"):
        yield Job(["model", *PENGUINS, "species", "--calibrate", method, "--export", "model.json"])
        yield run(PENGUINS, "NAIVEBAYES species.", "--calibrate", method, "--save-state", "state.bin")
    for options in (["--explain"], ["--explain", "1", "--save-data", "out.parquet"]):
        yield Job(["score", "--model", made("coded.bin"), *table("survey.csv"), *options])
    for form in (*forms, "json"):
        yield Job(["inspect", made("coded.bin"), "--weights", "--format", form])
    for name, drift in (("survey.csv", "drift.csv"), ("penguins.csv", "drift.tsv"),
                        ("survey.csv", "out.csv"), ("survey.csv", "none/drift.csv"),
                        ("survey.csv", "drift.txt")):
        model = made("coded.bin" if name == "survey.csv" else "model.bin")
        yield Job(["score", "--model", model, *table(name), "--save-data", "out.csv", *JSON,
                   "--drift", drift])
    for model, name in (("model.bin", "biopsies.csv"), ("rank.bin", "penguins.csv"),
                        ("model.bin", "nowhere.csv"), ("cat1.bin", "odd.csv")):
        yield Job(["score", "--model", made(model), *table(name), "--save-data", "out.csv"])


# In stages: what a stage uses was made by those before it.
JOBS = (made_first(),
        {f"{jobs.__name__}-{i:03}": job
         for jobs in (every_command, every_table, every_option, every_state)
         for i, job in enumerate(jobs(), 1)})
