// The jobs through the C interface: what the program gives, as a document and as streams.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <map>
#include <nlohmann/json.hpp>
#include <thread>

#include "common/MissingValue.h"
#include "tests/host/data/TableFixtures.h"
#include "tests/operations/c/CHost.h"

namespace {

using MCHost::ReadFile;
using MCHost::ScratchFolder;
using MCTest::CHost;
using MCTest::Held;
using nlohmann::json;

constexpr char kCommands[] =
    "SELECTPRED species BY island sex WITH bill_length_mm body_mass_g year\n"
    "  /CRITERIA PCUTOFF=0.05 /PRINT CPS EXCLUDED SUMMARY SELECTED /PLOT SUMMARY\n"
    "  /MACROVAR FACTORS=f COVARIATES=c.\n"
    "NAIVEBAYES species BY !f WITH !c /TRAININGSAMPLE PERCENT=70 /SAVE PREDVAL(p) PREDPROB(q).\n";

constexpr predselect_reading_option kMissing[] = {{"missing", "body_mass_g=4000..4200,3750"},
                                                  {"missing", "*=2008"}};

constexpr predselect_variable_level kLevels[] = {{"year", PREDSELECT_NOMINAL},
                                                 {"year", PREDSELECT_SCALE}};

predselect_table_options PenguinOptions(const std::string& schema) {
  return {sizeof(predselect_table_options),
          MCTest::kPenguins.c_str(),
          schema.c_str(),
          nullptr,
          kLevels,
          2,
          PREDSELECT_KEEP_CELLS,
          kMissing,
          2,
          nullptr,
          0};
}

// A document of the program as the library gives it: without what a report is drawn from.
std::string Document(const std::string& file) {
  auto document = nlohmann::ordered_json::parse(ReadFile(file));
  for (auto& run : document["runs"]) run.erase("findings");
  return document.dump(2) + "\n";
}

// What the program writes to `file` for a verb and its options, and what it ends with.
int RunProgram(const std::string& arguments, const std::string& file) {
  const std::string line = PREDSELECT_BINARY_DIR "/bin/predselect " + arguments + " -o " + file;
  return std::system((line + " 2>/dev/null").c_str());
}

TEST(CJobs, GiveTheProgramsDocumentsAndPage) {
  const ScratchFolder folder;
  const std::string schema = ReadFile(MCTest::kSchema);
  const std::string commands = folder.Write("commands.txt", kCommands);
  const std::string state = folder.Path("model.bin");
  const std::string data = " --data " + MCTest::kPenguins + " --schema " + MCTest::kSchema +
                           " --level year=nominal --level year=scale --missing " +
                           kMissing[0].word + " --missing '" + kMissing[1].word + "'";

  CHost host(PenguinOptions(schema));
  ASSERT_EQ(host.Run(kCommands, state), PREDSELECT_OK) << host.Error();
  const std::string saved = ReadFile(state);
  const std::string run = "run" + data + " --save-state " + state + " -f ";
  ASSERT_EQ(RunProgram(run + commands + " --format json", folder.Path("run.json")), 0);
  EXPECT_EQ(host.Json(), ReadFile(folder.Path("run.json")));
  EXPECT_EQ(saved, ReadFile(state));
  ASSERT_EQ(RunProgram(run + commands, folder.Path("run.txt")), 0);
  const char* page = nullptr;
  ASSERT_EQ(predselect_result_text(host.fSession, host.fResult, 0, &page), PREDSELECT_OK);
  EXPECT_EQ(page, ReadFile(folder.Path("run.txt")));

  const char* report = nullptr;
  ASSERT_EQ(predselect_result_html(host.fSession, host.fResult, "Three <species>", &report),
            PREDSELECT_OK);
  EXPECT_THAT(report, testing::StartsWith("<!doctype html>"));
  EXPECT_THAT(report, testing::HasSubstr("Three "));
  EXPECT_THAT(report, testing::Not(testing::HasSubstr("Three <species>")));

  const char* bytes = nullptr;
  size_t size = 0;
  ASSERT_EQ(predselect_result_keep(host.fSession, host.fResult, &bytes, &size), PREDSELECT_OK);
  Held<predselect_result> restored;
  ASSERT_EQ(predselect_result_restore(host.fSession, bytes, size, &restored), PREDSELECT_OK);
  EXPECT_EQ(predselect_result_restore(host.fSession, bytes, size - 1, &restored),
            PREDSELECT_DATA_ERROR);
  EXPECT_EQ(restored, nullptr);
  EXPECT_THAT(host.Error(), testing::HasSubstr("damaged"));
  ASSERT_EQ(predselect_result_restore(host.fSession, bytes, size, &restored), PREDSELECT_OK);
  const char* again = nullptr;
  ASSERT_EQ(predselect_result_html(host.fSession, restored, "Three <species>", &again),
            PREDSELECT_OK);
  EXPECT_STREQ(again, report);
  ArrowArrayStream columns{};
  EXPECT_EQ(predselect_result_new_columns(host.fSession, restored, &columns), PREDSELECT_MISUSE);

  CHost fresh(PenguinOptions(schema));
  ASSERT_EQ(predselect_describe(fresh.fSession, fresh.fTable, &fresh.fResult), PREDSELECT_OK);
  ASSERT_EQ(RunProgram("describe" + data + " --format json", folder.Path("describe.json")), 0);
  EXPECT_EQ(fresh.Json(), Document(folder.Path("describe.json")));

  Held<predselect_state> model;
  ASSERT_EQ(predselect_state_load(host.fSession, state.c_str(), &model), PREDSELECT_OK);
  ASSERT_EQ(predselect_inspect(host.fSession, model, &host.fResult), PREDSELECT_OK);
  ASSERT_EQ(RunProgram("inspect " + state + " --format json", folder.Path("inspect.json")), 0);
  EXPECT_EQ(host.Json(), Document(folder.Path("inspect.json")));
}

// However the table is opened, by whichever library.
TEST(CJobs, ShortVerbsGiveTheProgramsDocumentsWhereverTheCellsAre) {
  const ScratchFolder folder;
  const char* excluded[] = {"year"};
  const predselect_rank_options rank{sizeof(rank), PREDSELECT_BY_BITS, excluded, 1, 3};
  predselect_model_options model{};
  model.struct_size = sizeof(model);
  const std::string pmml = folder.Path("model.pmml");
  model.predictors = 2;
  model.pmml_path = pmml.c_str();
  ASSERT_EQ(RunProgram("rank " + MCTest::kPenguins + " species --by bits --except year --top 3" +
                           " --format json",
                       folder.Path("rank.json")),
            0);
  ASSERT_EQ(RunProgram("model " + MCTest::kPenguins + " species --predictors 2 --format json " +
                           "--pmml " + pmml,
                       folder.Path("model.json")),
            0);
  for (const size_t keep :
       {PREDSELECT_KEEP_CELLS, PREDSELECT_KEEP_BATCHES, PREDSELECT_KEEP_ASIDE}) {
    predselect_table_options options{};
    options.struct_size = sizeof(options);
    options.name = MCTest::kPenguins.c_str();
    options.keep = keep;
    CHost host(options);
    for (const bool isFile : {false, true}) {
      if (isFile && keep == PREDSELECT_KEEP_BATCHES) continue;
      if (isFile) {
        ASSERT_EQ(predselect_table_open_file(host.fSession, MCTest::kPenguins.c_str(), nullptr,
                                             &options, &host.fTable),
                  PREDSELECT_OK)
            << host.Error();
      }
      ASSERT_EQ(predselect_rank(host.fSession, host.fTable, "species", &rank, &host.fResult),
                PREDSELECT_OK)
          << host.Error();
      EXPECT_EQ(host.Json(), Document(folder.Path("rank.json"))) << keep;
      ASSERT_EQ(predselect_model(host.fSession, host.fTable, "species", &model, &host.fResult),
                PREDSELECT_OK)
          << host.Error();
      EXPECT_EQ(host.Json(), Document(folder.Path("model.json"))) << keep;
    }
  }
}

TEST(CJobs, ReadAFileAsTheCallerSaysItIsWritten) {
  const ScratchFolder folder;
  const std::string path = folder.Write("odd.csv", "a;1,5;99\nb;2,5;3\nc;4,5;99\n");
  const predselect_reading_option reading[] = {
      {"delimiter", ";"}, {"decimal", ","}, {"no-header", nullptr}, {"missing", "column3=99"}};
  predselect_table_options options{};
  options.struct_size = sizeof(options);
  options.reading = reading;
  options.n_reading = std::size(reading);
  CHost host;
  ASSERT_EQ(
      predselect_table_open_file(host.fSession, path.c_str(), nullptr, &options, &host.fTable),
      PREDSELECT_OK)
      << host.Error();
  ASSERT_EQ(predselect_describe(host.fSession, host.fTable, &host.fResult), PREDSELECT_OK);
  std::map<std::string, json> cells;  // of the dictionary
  const json document = json::parse(host.Json());
  for (const json& cell : document["runs"][0]["tables"][0]["cells"]) {
    cells[cell["row"][0].get<std::string>() + " " + cell["column"][0].get<std::string>()] =
        cell["value"];
  }
  EXPECT_EQ(cells["column2 Minimum"], 1.5);
  EXPECT_EQ(cells["column2 Maximum"], 4.5);
  EXPECT_EQ(cells["column3 Valid"], 1.0);
  EXPECT_EQ(cells["column3 Missing"], 0.0);
  EXPECT_EQ(cells["column3 User-missing"], 2.0);
}

// A batch of one column of numbers that are the test's own.
struct OwnNumbers {
  std::vector<double> fCells{1.5, 2.5, 4.0, 8.0, 16.0, 32.0};
  bool fbReleased = false;
  bool fbGiven = false;
};

TEST(CJobs, HeldBatchesAreLookedAtWhereTheyAreUntilAllIsClosed) {
  OwnNumbers numbers;
  ArrowArrayStream stream{};
  stream.get_schema = [](ArrowArrayStream*, ArrowSchema* schema) {
    static ArrowSchema column{};
    static ArrowSchema* children[] = {&column};
    column = {"g",    "x",     nullptr, 0,
              0,      nullptr, nullptr, [](ArrowSchema* s) { s->release = nullptr; },
              nullptr};
    *schema = {"+s",   "",       nullptr, 0,
               1,      children, nullptr, [](ArrowSchema* s) { s->release = nullptr; },
               nullptr};
    return 0;
  };
  stream.get_next = [](ArrowArrayStream* self, ArrowArray* batch) {
    auto* own = static_cast<OwnNumbers*>(self->private_data);
    static const void* buffers[] = {nullptr, nullptr};
    static const void* none[] = {nullptr};
    static ArrowArray column{};
    static ArrowArray* children[] = {&column};
    *batch = {};
    if (std::exchange(own->fbGiven, true)) return 0;
    buffers[1] = own->fCells.data();
    const auto n = static_cast<std::int64_t>(own->fCells.size());
    column = {n, 0, 0, 2, 0, buffers, nullptr, nullptr, nullptr, nullptr};
    *batch = {n,
              0,
              0,
              1,
              1,
              none,
              children,
              nullptr,
              [](ArrowArray* array) {
                static_cast<OwnNumbers*>(array->private_data)->fbReleased = true;
                array->release = nullptr;
              },
              own};
    return 0;
  };
  stream.get_last_error = [](ArrowArrayStream*) -> const char* { return nullptr; };
  stream.release = [](ArrowArrayStream* self) { self->release = nullptr; };
  stream.private_data = &numbers;
  predselect_table_options options{};
  options.struct_size = sizeof(options);
  options.keep = PREDSELECT_KEEP_BATCHES;
  CHost host;
  ASSERT_EQ(predselect_table_open(host.fSession, &stream, &options, &host.fTable), PREDSELECT_OK)
      << host.Error();
  EXPECT_FALSE(numbers.fbReleased);
  numbers.fCells.back() = 1000.0;  // which shows that they were not copied
  ASSERT_EQ(predselect_describe(host.fSession, host.fTable, &host.fResult), PREDSELECT_OK);
  EXPECT_THAT(host.Json(), testing::HasSubstr("1000"));
  host.fTable.Close();
  EXPECT_FALSE(numbers.fbReleased) << "the result may yet give out its new columns";
  host.fResult.Close();
  EXPECT_TRUE(numbers.fbReleased);
}

TEST(CJobs, TakeTheMemoryThatACommandDoesNotState) {
  const std::string command = "NAIVEBAYES species BY island sex WITH bill_length_mm.";
  const auto holds = testing::HasSubstr("The memory for cases, ");
  CHost host;
  ASSERT_EQ(host.Run(command), PREDSELECT_OK) << host.Error();
  EXPECT_THAT(host.Json(), testing::Not(holds));
  ASSERT_EQ(host.Run(command, "", 5), PREDSELECT_OK) << host.Error();
  EXPECT_THAT(host.Json(), testing::HasSubstr("The memory for cases, 5 KB, holds 106 of the 344"));
  ASSERT_EQ(host.Run(command, "", PREDSELECT_MEMORY_AUTO), PREDSELECT_OK) << host.Error();
  EXPECT_THAT(host.Json(), testing::Not(holds));
}

// The headings of one cell, joined, and its value as JSON.
using FlatCells = std::vector<std::pair<std::string, std::string>>;

std::string JoinPaths(const std::vector<json>& paths) {
  std::string joined;
  for (const json& path : paths) {
    for (const json& heading : path) joined += heading.get<std::string>() + "|";
  }
  return joined;
}

std::string TextOf(const json& value) {
  if (!value.is_array()) return value.is_string() ? value.get<std::string>() : value.dump();
  std::string joined;
  for (const json& item : value) joined += (joined.empty() ? "" : " ") + item.get<std::string>();
  return joined;
}

FlatCells CellsOfDocument(const json& table) {
  FlatCells cells;
  for (const json& cell : table["cells"]) {
    if (cell["value"].is_null()) continue;
    std::string column;
    for (const json& key : cell["column"]) {
      column += (column.empty() ? "" : ": ") + key.get<std::string>();
    }
    std::string value = TextOf(cell["value"]);
    value.erase(std::remove(value.begin(), value.end(), '\n'), value.end());
    cells.emplace_back(JoinPaths({cell["row"], cell["layer"]}) + column, value);
  }
  return cells;
}

// The names of the fields are those of the document, so what a field is tells its name.
FlatCells CellsOfStream(MCHost::MemoryTable& table, const json& dimensions) {
  std::vector<std::string> keys(static_cast<std::size_t>(table.CaseCount()));
  FlatCells cells;
  for (int i = 0; i < table.ColumnCount(); ++i) {
    const std::string name = table.GetVariable(i).GetName();
    const auto names = [&](const json& dimension) {
      const auto text = dimension.get<std::string>();
      return name == text || name.starts_with(text + ": Group ");
    };
    const bool isKey = std::any_of(dimensions["rows"].begin(), dimensions["rows"].end(), names) ||
                       std::any_of(dimensions["layers"].begin(), dimensions["layers"].end(), names);
    const auto scan = table.Scan({i});
    while (const MCHost::TableBatch* batch = scan->Next()) {
      const MCHost::ColumnView& column = batch->fColumns[0];
      for (std::size_t j = 0; j < batch->fNCases; ++j) {
        const bool isText = column.fpNumbers == nullptr;
        if (isText ? column.fpCodes[j] < 0 : MCMV::IsMissing(column.fpNumbers[j])) continue;
        const std::string text =
            isText ? column.fpDictionary->At(column.fpCodes[j]) : json(column.fpNumbers[j]).dump();
        if (isKey) {
          keys[j] += text + "|";
        } else {
          cells.emplace_back(keys[j] + name, text);
        }
      }
    }
  }
  return cells;
}

TEST(CJobs, TableStreamsHoldEveryValueOfTheDocument) {
  CHost host;
  ASSERT_EQ(host.Run(kCommands), PREDSELECT_OK) << host.Error();
  const json document = json::parse(host.Json());
  std::size_t index = 0;
  for (const json& run : document["runs"]) {
    for (const json& table : run["tables"]) {
      SCOPED_TRACE(table["title"]);
      predselect_table_info info{sizeof(info), nullptr, nullptr, nullptr, 0};
      ASSERT_EQ(predselect_result_table_info(host.fSession, host.fResult, index, &info),
                PREDSELECT_OK);
      EXPECT_EQ(info.subtype, table["subtype"]);
      EXPECT_EQ(info.title, table["title"]);
      EXPECT_EQ(info.command, run["command"]);
      ArrowArrayStream stream;
      ASSERT_EQ(predselect_result_table(host.fSession, host.fResult, index, &stream),
                PREDSELECT_OK);
      MCHost::MemoryTable flat(&stream);
      EXPECT_THAT(CellsOfStream(flat, table["dimensions"]),
                  testing::UnorderedElementsAreArray(CellsOfDocument(table)));
      ++index;
    }
  }
  std::size_t count = 0;
  EXPECT_EQ(predselect_result_table_count(host.fSession, host.fResult, &count), PREDSELECT_OK);
  EXPECT_EQ(count, index);
  EXPECT_GT(count, 6u);
}

TEST(CJobs, RecordsHaveOneCellOfAClassificationEach) {
  CHost host;
  ASSERT_EQ(host.Run("NAIVEBAYES species BY island /PRINT CLASSIFICATION."), PREDSELECT_OK);
  ArrowArrayStream stream;
  ASSERT_EQ(predselect_result_records(host.fSession, host.fResult, 0, &stream), PREDSELECT_OK);
  MCHost::MemoryTable records(&stream);
  EXPECT_THAT(MCHost::Dictionary(records),
              testing::ElementsAre("observed:9", "predicted:9", "sample:8", "cases:0"));
  EXPECT_EQ(records.CaseCount(), 9);
}

TEST(CJobs, AReloadedModelScoresAsItDidFreshAndStreamsOutliveTheRest) {
  const ScratchFolder folder;
  ArrowArrayStream saved;
  ArrowArrayStream scored;
  ArrowArrayStream explained;
  {
    CHost host;
    const std::string path = folder.Path("model.xml");
    ASSERT_EQ(host.Run("NAIVEBAYES species BY island sex WITH body_mass_g "
                       "/SAVE PREDVAL(p) PREDPROB(q).",
                       path),
              PREDSELECT_OK)
        << host.Error();
    ASSERT_EQ(predselect_result_new_columns(host.fSession, host.fResult, &saved), PREDSELECT_OK);
    Held<predselect_state> model;
    ASSERT_EQ(predselect_state_load(host.fSession, path.c_str(), &model), PREDSELECT_OK);
    const std::string copy = folder.Path("copy.bin");
    ASSERT_EQ(predselect_state_save(host.fSession, model, copy.c_str()), PREDSELECT_OK);
    ASSERT_EQ(predselect_state_load(host.fSession, copy.c_str(), &model), PREDSELECT_OK);
    const std::string pmml = folder.Path("model.pmml");
    ASSERT_EQ(predselect_state_pmml(host.fSession, model, pmml.c_str()), PREDSELECT_OK);
    EXPECT_THAT(ReadFile(pmml), testing::HasSubstr("<NaiveBayesModel"));
    const std::string query = folder.Path("model.sql");
    predselect_export_options elsewhere = {sizeof elsewhere, nullptr, "clients"};
    ASSERT_EQ(predselect_state_export(host.fSession, model, query.c_str(), &elsewhere),
              PREDSELECT_OK);
    EXPECT_THAT(ReadFile(query), testing::HasSubstr("FROM \"clients\" AS t"));
    elsewhere.format = "xls";
    EXPECT_EQ(predselect_state_export(host.fSession, model, query.c_str(), &elsewhere),
              PREDSELECT_BAD_REQUEST);
    const predselect_score_options options{sizeof(options), "again", nullptr, 0};
    ASSERT_EQ(predselect_score(host.fSession, host.fTable, model, &options, &host.fResult),
              PREDSELECT_OK)
        << host.Error();
    ASSERT_EQ(predselect_result_new_columns(host.fSession, host.fResult, &scored), PREDSELECT_OK);
    EXPECT_EQ(predselect_explain(host.fSession, host.fTable, nullptr, &host.fResult),
              PREDSELECT_MISUSE);
    ASSERT_EQ(predselect_explain(host.fSession, host.fTable, model, &host.fResult), PREDSELECT_OK)
        << host.Error();
    ASSERT_EQ(predselect_result_new_columns(host.fSession, host.fResult, &explained),
              PREDSELECT_OK);
  }
  MCHost::MemoryTable first(&saved);
  MCHost::MemoryTable second(&scored);
  EXPECT_THAT(MCHost::Dictionary(first), testing::ElementsAre("p:9", "q_1:0", "q_2:0", "q_3:0"));
  EXPECT_EQ(second.GetVariable(0).GetName(), "again");
  EXPECT_EQ(second.GetVariable(1).GetLabel(), "Predicted probability that species is Adelie");
  ASSERT_EQ(second.CaseCount(), 344);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(MCHost::Cells(first, i), MCHost::Cells(second, i)) << i;
  EXPECT_EQ(MCHost::MemoryTable(&explained).ColumnCount() % 3, 0) << "one a predictor and class";
}

TEST(CJobs, EvaluateAModelOnCasesWithAndWithoutItsClasses) {
  const ScratchFolder folder;
  const std::string state = folder.Path("model.bin");
  CHost host;
  ASSERT_EQ(host.Run("NAIVEBAYES species BY island WITH bill_length_mm.", state), PREDSELECT_OK);
  Held<predselect_state> model;
  ASSERT_EQ(predselect_state_load(host.fSession, state.c_str(), &model), PREDSELECT_OK);
  EXPECT_EQ(predselect_evaluate(host.fSession, host.fTable, nullptr, &host.fResult),
            PREDSELECT_MISUSE);
  ASSERT_EQ(predselect_evaluate(host.fSession, host.fTable, model, &host.fResult), PREDSELECT_OK)
      << host.Error();
  ASSERT_EQ(RunProgram("evaluate --model " + state + " " + MCTest::kPenguins + " --format json",
                       folder.Path("evaluate.json")),
            0);
  const json own = json::parse(host.Json())["runs"];
  EXPECT_EQ(own, json::parse(Document(folder.Path("evaluate.json")))["runs"]);
  EXPECT_EQ(own[0]["tables"][0]["subtype"], "Evaluation");

  auto none = std::make_shared<MCHost::MemoryTable>();
  none->AddStrings("species", {});
  none->AddStrings("island", {});
  none->AddNumbers("bill_length_mm", {});
  ArrowArrayStream stream = MCTest::StreamOf(none);
  ASSERT_EQ(predselect_table_open(host.fSession, &stream, nullptr, &host.fTable), PREDSELECT_OK);
  EXPECT_EQ(predselect_evaluate(host.fSession, host.fTable, model, &host.fResult),
            PREDSELECT_BAD_REQUEST);
  EXPECT_THAT(host.Error(), testing::HasSubstr("there is nothing to evaluate"));
  EXPECT_EQ(predselect_score(host.fSession, host.fTable, model, nullptr, &host.fResult),
            PREDSELECT_OK)
      << host.Error();
}

// Counts a table of two text columns, cases from `first` to before `end`, into a state file.
void CountCases(CHost& host, int first, int end, const std::string& path) {
  std::vector<std::optional<std::string>> target;
  std::vector<std::optional<std::string>> predictor;
  for (int i = first; i < end; ++i) {
    target.emplace_back(std::to_string(i % 3));
    predictor.emplace_back(i % 7 == 0 ? std::nullopt : std::optional(std::to_string(i * i % 5)));
  }
  auto table = std::make_shared<MCHost::MemoryTable>();
  table->AddStrings("t", target);
  table->AddStrings("a", predictor);
  ArrowArrayStream stream = MCTest::StreamOf(table);
  ASSERT_EQ(predselect_table_open(host.fSession, &stream, nullptr, &host.fTable), PREDSELECT_OK);
  ASSERT_EQ(host.Run("SELECTPRED t BY a.", path), PREDSELECT_OK) << host.Error();
}

TEST(CJobs, MergedHalvesAreTheWholeUntilTheyAreRanked) {
  const ScratchFolder folder;
  CHost host;
  Held<predselect_state> states[3];
  const int cases[][2] = {{0, 100}, {100, 250}, {0, 250}};
  for (int i = 0; i < 3; ++i) {
    const std::string path = folder.Path(std::to_string(i) + ".bin");
    CountCases(host, cases[i][0], cases[i][1], path);
    ASSERT_EQ(predselect_state_load(host.fSession, path.c_str(), &states[i]), PREDSELECT_OK);
  }
  ASSERT_EQ(predselect_state_merge(host.fSession, states[0], states[1]), PREDSELECT_OK)
      << host.Error();
  const auto inspect = [&](predselect_state* state) {
    EXPECT_EQ(predselect_inspect(host.fSession, state, &host.fResult), PREDSELECT_OK);
    return json::parse(host.Json())["runs"];
  };
  EXPECT_EQ(inspect(states[0]), inspect(states[2]));
  for (const std::string& name : {folder.Path("1.bin"), std::string("the second half")}) {
    EXPECT_EQ(predselect_state_merge(host.fSession, states[0], states[1]), PREDSELECT_BAD_REQUEST);
    EXPECT_EQ(host.Error(), "merge: " + name +
                                " cannot be added: one of the states is not as the data were "
                                "counted, but screened or ranked.");
    ASSERT_EQ(predselect_state_set_name(host.fSession, states[1], "the second half"),
              PREDSELECT_OK);
  }
}

TEST(CJobs, ThreadsWithSessionsOfTheirOwnGetTheSameResults) {
  std::vector<std::string> documents(4);
  std::vector<std::thread> threads;
  for (std::string& document : documents) {
    threads.emplace_back([&document, atWork = threads.size()] {
      CHost host;
      EXPECT_EQ(predselect_session_set_threads(host.fSession, 1025), PREDSELECT_MISUSE);
      EXPECT_EQ(predselect_session_set_threads(host.fSession, atWork), PREDSELECT_OK);
      EXPECT_EQ(host.Run(kCommands), PREDSELECT_OK) << host.Error();
      document = host.Json();
    });
  }
  for (std::thread& thread : threads) thread.join();
  threads.clear();

  const ScratchFolder folder;
  const std::string model = folder.Path("model.xml");
  CHost host;
  ASSERT_EQ(host.Run("NAIVEBAYES species BY island.", model), PREDSELECT_OK) << host.Error();
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&model] {
      Held<predselect_session> session;
      Held<predselect_state> state;
      EXPECT_EQ(predselect_session_open(&session), PREDSELECT_OK);
      for (int time = 0; time < 30; ++time) {
        EXPECT_EQ(predselect_state_load(session, model.c_str(), &state), PREDSELECT_OK);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_GT(documents[0].size(), 10000u);
  for (const std::string& document : documents) EXPECT_EQ(document, documents[0]);
}

}  // namespace
