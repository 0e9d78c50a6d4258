// What stands below the options in the help of the program and of its verbs.
#pragma once

namespace PredSelectApp {

constexpr const char* kDescription =
    "PredSelect says which columns of a table carry information about a target, and which few of "
    "them make a "
    "good classifier.";

constexpr const char* kProgramNotes = R"(Examples:
  What is in the file?
    predselect describe penguins.csv

  Which columns go with a target? Which few predict it, and how well?
    predselect rank penguins.csv species
    predselect model penguins.csv species --save-model model.bin

  Predict new data with that model:
    predselect score --model model.bin new.csv --save-data predicted.csv

  The same with the command language, for some columns:
    predselect run penguins.csv \
      -c "SELECTPRED species BY island sex WITH bill_length_mm body_mass_g"

Environment: NO_COLOR for pages without colours, COLUMNS for their width, PAGER for what shows long ones on a terminal (less where it is installed; --no-pager does without), TMPDIR for temporary files.

Exit codes: 0 all is done, 1 a command reported an error, 2 wrong usage, 3 data could not be read or a result not written, 70 internal error, 130 stopped by a signal.

"predselect help VERB" tells all about a verb, "predselect help SELECTPRED" and "predselect help NAIVEBAYES" about the commands.)";

constexpr const char* kRankExamples = R"(Examples:
  predselect rank penguins.csv species
  predselect rank survey.parquet income --weight n --by bits --top 50
  predselect rank penguins.csv species -o ranking.csv)";

constexpr const char* kModelExamples = R"(Examples:
  predselect model penguins.csv species
  predselect model old.csv churn --predictors 5 --save-model model.bin
  predselect model old.csv churn --except id --pmml model.xml)";

constexpr const char* kDescribeExamples = R"(Examples:
  predselect describe penguins.csv
  predselect describe penguins.csv --schema penguins.schema.json --format json)";

constexpr const char* kScoreExamples = R"(Examples:
  predselect model old.csv churn --save-model model.bin
  predselect score --model model.bin new.csv --save-data predicted.csv
  predselect score --model model.bin new.csv --save-data keyed.csv \
    --only-new --id id
  predselect score --model model.bin new.csv --save-data out.csv \
    --drift drift.csv
  predselect score --model model.bin new.csv --explain 5 --save-data why.csv)";

constexpr const char* kEvaluateExamples = R"(Examples:
  predselect model old.csv churn --save-model model.bin
  predselect evaluate --model model.bin new.csv
  predselect evaluate --model model.bin new.csv --weight n -o measures.csv)";

constexpr const char* kRunExamples = R"(Examples:
  predselect run penguins.csv -c "SELECTPRED species"
  predselect run survey.parquet --weight n --stream -f commands.txt
  predselect run penguins.csv --schema penguins.schema.json --format json \
    -c "SELECTPRED species" -o result.json

A command ends with a period at the end of a line. Neither BY nor WITH: every other variable is a candidate. Lists take "a TO c" and ALL. "predselect help SELECTPRED" and "predselect help NAIVEBAYES" show what they take.)";

constexpr const char* kInspectExamples = R"(Examples:
  predselect inspect model.bin
  predselect inspect model.bin --format json
  predselect inspect model.bin --weights -o weights.csv)";

constexpr const char* kRangeExamples = R"(Examples:
  predselect range part1.csv --part 0 -o range1.bin
  predselect range part2.csv --part 1 -o range2.bin
  predselect merge range1.bin range2.bin -o ranges.bin
  predselect run part1.csv --using ranges.bin -c "SELECTPRED income" --save-state part1.bin)";

constexpr const char* kMergeExamples = R"(Examples:
  predselect run part1.csv -c "SELECTPRED income" --save-state part1.bin
  predselect run part2.csv -c "SELECTPRED income" --save-state part2.bin
  predselect merge part1.bin part2.bin -o all.bin
  predselect inspect all.bin)";

constexpr const char* kExportExamples = R"(Examples:
  predselect export model.bin -o model.sql --table clients
  predselect export model.bin -o model.onnx
  predselect export model.bin -o portable.xml --to pmml)";

constexpr const char* kViewExamples = R"(Examples:
  predselect view model.bin
  predselect view ranking.json -o report.html)";

constexpr const char* kCompletionExamples = R"(Examples:
  bash, now:            source <(predselect completion bash)
  zsh, in a folder of $fpath:
                        predselect completion zsh > _predselect
  fish, for good:       predselect completion fish \
                          > ~/.config/fish/completions/predselect.fish)";

}  // namespace PredSelectApp
