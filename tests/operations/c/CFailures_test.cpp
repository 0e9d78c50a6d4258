// What goes wrong through the C interface: a status, a text, nothing leaked and nothing thrown.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <functional>
#include <thread>

#include "common/MCAssert.h"
#include "tests/host/data/TableFixtures.h"
#include "tests/operations/c/CHost.h"

namespace {

using MCHost::ScratchFolder;
using MCTest::CHost;
using MCTest::Held;
using testing::EndsWith;
using testing::HasSubstr;

TEST(CFailures, NullAnywhereIsMisuseAndNamesTheArgument) {
  CHost host;
  const ScratchFolder folder;
  ASSERT_EQ(host.Run("SELECTPRED species BY island.", folder.Path("s.bin")), PREDSELECT_OK);
  Held<predselect_state> state;
  ASSERT_EQ(predselect_state_load(host.fSession, folder.Path("s.bin").c_str(), &state),
            PREDSELECT_OK);
  predselect_session* s = host.fSession;
  predselect_table* t = host.fTable;
  predselect_result* r = host.fResult;
  predselect_table* table = nullptr;
  predselect_state* loaded = nullptr;
  predselect_result* result = nullptr;
  const char* text = nullptr;
  size_t count = 0;
  predselect_table_info info{sizeof(info), nullptr, nullptr, nullptr, 0};
  ArrowArrayStream out{};
  const predselect_rank_options oneUnnamed{sizeof(oneUnnamed), PREDSELECT_BY_P, nullptr, 1, 0};
  const auto open = [&](predselect_session* session, bool isGiven, predselect_table** to) {
    ArrowArrayStream stream = MCTest::Penguins();
    const predselect_status status =
        predselect_table_open(session, isGiven ? &stream : nullptr, nullptr, to);
    EXPECT_EQ(stream.release == nullptr, isGiven);
    if (stream.release != nullptr) stream.release(&stream);
    return status;
  };
  const std::pair<const char*, std::function<predselect_status()>> calls[] = {
      {"name", [&] { return predselect_session_set_application(s, nullptr, "1"); }},
      {"version", [&] { return predselect_session_set_application(s, "a", nullptr); }},
      {"path", [&] { return predselect_session_set_temp_folder(s, nullptr); }},
      {"stream", [&] { return open(s, false, &table); }},
      {"table", [&] { return open(s, true, nullptr); }},
      {"table", [&] { return predselect_table_notes(s, nullptr, &text); }},
      {"notes", [&] { return predselect_table_notes(s, t, nullptr); }},
      {"path", [&] { return predselect_state_load(s, nullptr, &loaded); }},
      {"state", [&] { return predselect_state_load(s, "x", nullptr); }},
      {"state", [&] { return predselect_state_save(s, nullptr, "x"); }},
      {"path", [&] { return predselect_state_save(s, state, nullptr); }},
      {"state", [&] { return predselect_state_set_name(s, nullptr, "x"); }},
      {"name", [&] { return predselect_state_set_name(s, state, nullptr); }},
      {"into", [&] { return predselect_state_merge(s, nullptr, state); }},
      {"from", [&] { return predselect_state_merge(s, state, nullptr); }},
      {"state", [&] { return predselect_state_pmml(s, nullptr, "x"); }},
      {"state", [&] { return predselect_state_export(s, nullptr, "x", nullptr); }},
      {"table", [&] { return predselect_rank(s, nullptr, "x", nullptr, &result); }},
      {"target", [&] { return predselect_rank(s, t, nullptr, nullptr, &result); }},
      {"result", [&] { return predselect_rank(s, t, "x", nullptr, nullptr); }},
      {"except", [&] { return predselect_rank(s, t, "x", &oneUnnamed, &result); }},
      {"table", [&] { return predselect_model(s, nullptr, "x", nullptr, &result); }},
      {"target", [&] { return predselect_model(s, t, nullptr, nullptr, &result); }},
      {"path", [&] { return predselect_table_open_file(s, nullptr, nullptr, nullptr, &table); }},
      {"table", [&] { return predselect_table_open_file(s, "x", nullptr, nullptr, nullptr); }},
      {"table", [&] { return predselect_run(s, nullptr, "x.", nullptr, &result); }},
      {"commands", [&] { return predselect_run(s, t, nullptr, nullptr, &result); }},
      {"result", [&] { return predselect_run(s, t, "x.", nullptr, nullptr); }},
      {"table", [&] { return predselect_describe(s, nullptr, &result); }},
      {"result", [&] { return predselect_describe(s, t, nullptr); }},
      {"state", [&] { return predselect_inspect(s, nullptr, &result); }},
      {"result", [&] { return predselect_inspect(s, state, nullptr); }},
      {"table", [&] { return predselect_score(s, nullptr, state, nullptr, &result); }},
      {"state", [&] { return predselect_score(s, t, nullptr, nullptr, &result); }},
      {"result", [&] { return predselect_score(s, t, state, nullptr, nullptr); }},
      {"result", [&] { return predselect_result_json(s, nullptr, &text); }},
      {"json", [&] { return predselect_result_json(s, r, nullptr); }},
      {"result", [&] { return predselect_result_text(s, nullptr, 0, &text); }},
      {"text", [&] { return predselect_result_text(s, r, 0, nullptr); }},
      {"result", [&] { return predselect_result_html(s, nullptr, nullptr, &text); }},
      {"html", [&] { return predselect_result_html(s, r, nullptr, nullptr); }},
      {"result", [&] { return predselect_result_keep(s, nullptr, &text, &count); }},
      {"bytes", [&] { return predselect_result_keep(s, r, nullptr, &count); }},
      {"size", [&] { return predselect_result_keep(s, r, &text, nullptr); }},
      {"bytes", [&] { return predselect_result_restore(s, nullptr, 0, &result); }},
      {"result", [&] { return predselect_result_restore(s, "x", 1, nullptr); }},
      {"result", [&] { return predselect_result_table_count(s, nullptr, &count); }},
      {"count", [&] { return predselect_result_table_count(s, r, nullptr); }},
      {"result", [&] { return predselect_result_table_info(s, nullptr, 0, &info); }},
      {"info", [&] { return predselect_result_table_info(s, r, 0, nullptr); }},
      {"result", [&] { return predselect_result_table(s, nullptr, 0, &out); }},
      {"stream", [&] { return predselect_result_table(s, r, 0, nullptr); }},
      {"result", [&] { return predselect_result_records(s, nullptr, 0, &out); }},
      {"stream", [&] { return predselect_result_records(s, r, 0, nullptr); }},
      {"result", [&] { return predselect_result_new_columns(s, nullptr, &out); }},
      {"stream", [&] { return predselect_result_new_columns(s, r, nullptr); }},
  };
  for (const auto& [argument, call] : calls) {
    EXPECT_EQ(call(), PREDSELECT_MISUSE) << argument;
    EXPECT_EQ(host.Error(), std::string(argument) + " is NULL");
    s = nullptr;
    EXPECT_EQ(call(), PREDSELECT_MISUSE) << argument;
    s = host.fSession;
  }
  EXPECT_EQ(predselect_session_open(nullptr), PREDSELECT_MISUSE);
  EXPECT_STREQ(predselect_session_error(nullptr), "");
  EXPECT_STREQ(predselect_session_notes(nullptr), "");
  for (const void* left : {static_cast<void*>(table), static_cast<void*>(loaded),
                           static_cast<void*>(result), static_cast<void*>(out.private_data)}) {
    EXPECT_EQ(left, nullptr);
  }
  EXPECT_EQ(predselect_session_set_cancel(s, nullptr, nullptr), PREDSELECT_OK);
  EXPECT_EQ(predselect_session_set_progress(s, nullptr, nullptr), PREDSELECT_OK);
}

TEST(CFailures, OfATableSayWhatWasWrongAndTakeTheStreamAllTheSame) {
  const predselect_variable_level unknown{"specis", PREDSELECT_NOMINAL};
  const predselect_variable_level text{"species", PREDSELECT_SCALE};
  const predselect_variable_level odd{"year", 7};
  const predselect_reading_option noOption{"delimeter", ";"};
  const predselect_reading_option noCode{"missing", "year"};
  const predselect_reading_option strange{"missing", "sx=1"};
  const predselect_reading_option ranges{"missing", "year=1..2,3..4"};
  constexpr size_t kSize = sizeof(predselect_table_options);
  struct Newer {
    predselect_table_options known;
    const char* unknown;
  };
  const Newer newer{
      {sizeof(Newer), nullptr, nullptr, nullptr, nullptr, 0, 0, nullptr, 0, nullptr, 0}, "x"};
  const std::tuple<predselect_table_options, predselect_status, const char*> cases[] = {
      {{kSize, nullptr, nullptr, nullptr, &unknown, 1, 0, nullptr, 0, nullptr, 0},
       PREDSELECT_BAD_REQUEST,
       "level: the data have no variable \"specis\"; did you mean \"species\"?"},
      {{kSize, nullptr, nullptr, nullptr, &text, 1, 0, nullptr, 0, nullptr, 0},
       PREDSELECT_BAD_REQUEST,
       "level: \"species\" holds texts and cannot be scale."},
      {{kSize, nullptr, nullptr, nullptr, &odd, 1, 0, nullptr, 0, nullptr, 0},
       PREDSELECT_MISUSE,
       "a level is none of PREDSELECT_NOMINAL, PREDSELECT_ORDINAL, PREDSELECT_SCALE"},
      {{kSize, nullptr, nullptr, nullptr, nullptr, 1, 0, nullptr, 0, nullptr, 0},
       PREDSELECT_MISUSE,
       "levels is NULL"},
      {{kSize, nullptr, nullptr, nullptr, nullptr, 0, 3, nullptr, 0, nullptr, 0},
       PREDSELECT_MISUSE,
       "keep is none of"},
      {{kSize, nullptr, nullptr, "sex", nullptr, 0, 0, nullptr, 0, nullptr, 0},
       PREDSELECT_BAD_REQUEST,
       "weight: \"sex\" holds texts; a weight must be a number."},
      {{kSize, nullptr, "{\"fields\": 1}", nullptr, nullptr, 0, 0, nullptr, 0, nullptr, 0},
       PREDSELECT_DATA_ERROR,
       "the schema"},
      {{kSize, "\xFF", nullptr, nullptr, nullptr, 0, 0, nullptr, 0, nullptr, 0},
       PREDSELECT_BAD_REQUEST,
       "name: the text is not UTF-8"},
      {{kSize, nullptr, nullptr, nullptr, nullptr, 0, 0, &noOption, 1, nullptr, 0},
       PREDSELECT_BAD_REQUEST,
       "delimeter: "},
      {{kSize, nullptr, nullptr, nullptr, nullptr, 0, 0, &noCode, 1, nullptr, 0},
       PREDSELECT_BAD_REQUEST,
       "missing: \"year\""},
      {{kSize, nullptr, nullptr, nullptr, nullptr, 0, 0, &strange, 1, nullptr, 0},
       PREDSELECT_BAD_REQUEST,
       "missing: the data have no variable \"sx\"; did you mean \"sex\"?"},
      {{kSize, nullptr, nullptr, nullptr, nullptr, 0, 0, &ranges, 1, nullptr, 0},
       PREDSELECT_BAD_REQUEST,
       "missing: \"year\" can have one range of missing values only."},
      {{kSize, nullptr, nullptr, nullptr, nullptr, 0, 0, nullptr, 1, nullptr, 0},
       PREDSELECT_MISUSE,
       "reading is NULL"},
      {{0, nullptr, nullptr, nullptr, nullptr, 0, 0, nullptr, 0, nullptr, 0},
       PREDSELECT_MISUSE,
       "struct_size is not set"},
      {{12, "data", nullptr, nullptr, nullptr, 0, 0, nullptr, 0, nullptr, 0},
       PREDSELECT_MISUSE,
       "struct_size is not set"},
      {{SIZE_MAX - 7, nullptr, nullptr, nullptr, nullptr, 0, 0, nullptr, 0, nullptr, 0},
       PREDSELECT_MISUSE,
       "struct_size is not set"},
      {newer.known, PREDSELECT_MISUSE,
       "the options say more than this version of the library knows"},
  };
  CHost host;
  for (const auto& [options, status, message] : cases) {
    SCOPED_TRACE(message);
    const predselect_table_options& given =
        options.struct_size == sizeof(Newer) ? newer.known : options;
    ArrowArrayStream stream = MCTest::Penguins();
    EXPECT_EQ(predselect_table_open(host.fSession, &stream, &given, &host.fTable), status);
    EXPECT_THAT(host.Error(), HasSubstr(message));
    EXPECT_EQ(stream.release, nullptr);
    EXPECT_EQ(host.fTable, nullptr);
  }
  // A caller of the first version whose struct ended before the levels.
  const predselect_table_options older{offsetof(predselect_table_options, levels),
                                       nullptr,
                                       nullptr,
                                       nullptr,
                                       &odd,
                                       1,
                                       0,
                                       nullptr,
                                       0,
                                       nullptr,
                                       0};
  ArrowArrayStream stream = MCTest::Penguins();
  EXPECT_EQ(predselect_table_open(host.fSession, &stream, &older, &host.fTable), PREDSELECT_OK);
}

// Breaks at the call of that number: 0 the schema, 1 and on the batches.
class BreakingBatches : public MCHost::IArrowBatches {
 public:
  explicit BreakingBatches(int breakAt) : fLeft(breakAt) {
    fFields.push_back({fLeft == 0 ? "" : "v", true, {}});
  }
  const std::vector<MCHost::ArrowField>& Fields() const override { return fFields; }
  std::size_t Next(std::vector<MCHost::ArrowCells>& columns) override {
    if (--fLeft == 0) throw std::runtime_error("the producer broke");
    columns[0].AddMissing();
    return 1;
  }

 private:
  int fLeft;
  std::vector<MCHost::ArrowField> fFields;
};

TEST(CFailures, OfAStreamAreDataErrorsInItsOwnWords) {
  CHost host;
  const char* messages[] = {"data, column 1: the column has no name", "data: the producer broke",
                            "data: the producer broke"};
  for (const size_t keep :
       {PREDSELECT_KEEP_CELLS, PREDSELECT_KEEP_BATCHES, PREDSELECT_KEEP_ASIDE}) {
    predselect_table_options options{};
    options.struct_size = sizeof(options);
    options.keep = keep;
    for (int breakAt = 0; breakAt < 3; ++breakAt) {
      ArrowArrayStream stream{};
      MCHost::WriteArrowStream(std::make_unique<BreakingBatches>(breakAt), &stream);
      EXPECT_EQ(predselect_table_open(host.fSession, &stream, &options, &host.fTable),
                PREDSELECT_DATA_ERROR);
      EXPECT_EQ(host.Error(), messages[breakAt]) << keep;
      EXPECT_EQ(stream.release, nullptr);
    }
  }
  ArrowArrayStream closed{};
  EXPECT_EQ(predselect_table_open(host.fSession, &closed, nullptr, &host.fTable),
            PREDSELECT_DATA_ERROR);
  EXPECT_EQ(host.Error(), "data: the data stream is closed");

  ArrowArrayStream lacking = MCTest::Penguins();
  lacking.get_next = nullptr;
  EXPECT_EQ(predselect_table_open(host.fSession, &lacking, nullptr, &host.fTable),
            PREDSELECT_DATA_ERROR);
  EXPECT_EQ(host.Error(), "data: the data stream lacks a function");
  // A batch whose number of cases is none.
  ArrowArrayStream negative = MCTest::Penguins();
  static const auto giveBatch = negative.get_next;
  negative.get_next = [](ArrowArrayStream* self, ArrowArray* batch) {
    const int code = giveBatch(self, batch);
    batch->length = -batch->length;
    return code;
  };
  predselect_table_options batches{};
  batches.struct_size = sizeof(batches);
  batches.keep = PREDSELECT_KEEP_BATCHES;
  EXPECT_EQ(predselect_table_open(host.fSession, &negative, &batches, &host.fTable),
            PREDSELECT_DATA_ERROR);
  EXPECT_EQ(host.Error(), "data: a batch of the data does not match its columns");

  // Schemas that hold no fields, or say that they do; and a producer without words of its own.
  using GetSchema = int (*)(ArrowArrayStream*, ArrowSchema*);
  static ArrowSchema* kNoField[] = {nullptr};
  const std::pair<GetSchema, const char*> schemas[] = {
      {[](ArrowArrayStream*, ArrowSchema*) { return 0; }, "is not a table of columns"},
      {[](ArrowArrayStream*, ArrowSchema* schema) {
         schema->format = "+s";
         schema->n_children = 1;
         return 0;
       },
       "is not a table of columns"},
      {[](ArrowArrayStream*, ArrowSchema* schema) {
         schema->format = "+s";
         schema->n_children = 1;
         schema->children = kNoField;
         return 0;
       },
       "is not a table of columns"},
      {[](ArrowArrayStream*, ArrowSchema*) { return ENOMEM; }, "Cannot allocate memory"}};
  for (const auto& [getSchema, message] : schemas) {
    ArrowArrayStream stream = MCTest::Penguins();
    stream.get_schema = getSchema;
    stream.get_last_error = nullptr;
    EXPECT_EQ(predselect_table_open(host.fSession, &stream, nullptr, &host.fTable),
              PREDSELECT_DATA_ERROR);
    EXPECT_THAT(host.Error(), EndsWith(message));
  }
}

TEST(CFailures, OfJobsSayWhatWasWrong) {
  CHost host;
  const ScratchFolder folder;
  const std::string ranking = folder.Path("ranking.bin");
  const std::string notes = folder.Write("notes.bin", "no state");
  ASSERT_EQ(host.Run("SELECTPRED species BY island.", ranking), PREDSELECT_OK);
  Held<predselect_state> state;
  ASSERT_EQ(predselect_state_load(host.fSession, ranking.c_str(), &state), PREDSELECT_OK);
  const predselect_rank_options noRanking{sizeof(noRanking), 5, nullptr, 0, 0};
  predselect_model_options allTest{};
  allTest.struct_size = sizeof(allTest);
  allTest.test = 1.0;
  predselect_model_options often{};
  often.struct_size = sizeof(often);
  often.folds = 2;
  often.repeats = 1001;
  predselect_model_options seeded = often;
  seeded.repeats = 1;
  seeded.seed = std::size_t{1} << 31;
  predselect_table_options held{};
  held.struct_size = sizeof(held);
  held.keep = PREDSELECT_KEEP_BATCHES;
  const predselect_run_options folderIsAFile{
      sizeof(folderIsAFile), nullptr, notes.c_str(), 0, 0, 0};
  const predselect_session* s = host.fSession;
  predselect_session* session = host.fSession;
  ArrowArrayStream out{};
  const std::tuple<std::function<predselect_status()>, predselect_status, std::string> cases[] = {
      {[&] { return host.Run(""); }, PREDSELECT_BAD_REQUEST, "there is no command to run."},
      {[&] { return host.Run("SELECTPRED \xFF."); }, PREDSELECT_BAD_REQUEST,
       "commands: the text is not UTF-8"},
      {[&] { return predselect_run(session, host.fTable, "x.", &folderIsAFile, &host.fResult); },
       PREDSELECT_DATA_ERROR, notes + ": cannot be written into"},
      {[&] { return predselect_state_load(session, notes.c_str(), &state); }, PREDSELECT_DATA_ERROR,
       notes + ": cannot be used as a state"},
      {[&] { return predselect_state_load(session, ranking.c_str(), &state); }, PREDSELECT_OK, ""},
      {[&] { return predselect_state_save(session, state, "/nowhere/at/all.bin"); },
       PREDSELECT_DATA_ERROR, "/nowhere/at/all.bin"},
      {[&] { return predselect_state_merge(session, state, state); }, PREDSELECT_MISUSE,
       "a state cannot be merged into itself"},
      {[&] { return predselect_score(session, host.fTable, state, nullptr, &host.fResult); },
       PREDSELECT_BAD_REQUEST, "holds a ranking of predictors, not a Naive Bayes model."},
      {[&] { return predselect_state_pmml(session, state, "x.pmml"); }, PREDSELECT_BAD_REQUEST,
       "holds a ranking of predictors, not a Naive Bayes model."},
      {[&] { return predselect_rank(session, host.fTable, "specis", nullptr, &host.fResult); },
       PREDSELECT_BAD_REQUEST, "did you mean \"species\"?"},
      {[&] { return predselect_rank(session, host.fTable, "sex", &noRanking, &host.fResult); },
       PREDSELECT_MISUSE, "by is no predselect_rank_by"},
      {[&] {
         return predselect_model(session, host.fTable, "body_mass_g", nullptr, &host.fResult);
       },
       PREDSELECT_BAD_REQUEST, "\"body_mass_g\" is a number on a scale"},
      {[&] { return predselect_model(session, host.fTable, "sex", &allTest, &host.fResult); },
       PREDSELECT_MISUSE, "test is not below 1"},
      {[&] { return predselect_model(session, host.fTable, "sex", &often, &host.fResult); },
       PREDSELECT_MISUSE, "repeats is above 1000"},
      {[&] { return predselect_model(session, host.fTable, "sex", &seeded, &host.fResult); },
       PREDSELECT_MISUSE, "seed is above 2147483647"},
      {[&] {
         return predselect_table_open_file(session, notes.c_str(), nullptr, nullptr, &host.fTable);
       },
       PREDSELECT_DATA_ERROR, "notes.bin"},
      {[&] {
         return predselect_table_open_file(session, MCTest::kPenguins.c_str(), nullptr, &held,
                                           &host.fTable);
       },
       PREDSELECT_MISUSE, "keep is neither"},
      {[&] { return predselect_inspect(session, state, &host.fResult); }, PREDSELECT_OK, ""},
      {[&] { return predselect_result_table(session, host.fResult, 99, &out); }, PREDSELECT_MISUSE,
       "the result has no table 99"},
      {[&] { return predselect_result_new_columns(session, host.fResult, &out); },
       PREDSELECT_MISUSE, "the result is not of a table"},
  };
  for (const auto& [call, status, message] : cases) {
    EXPECT_EQ(call(), status) << message;
    EXPECT_THAT(predselect_session_error(s), HasSubstr(message));
    EXPECT_EQ(status == PREDSELECT_OK, host.Error().empty());
  }
}

TEST(CFailures, OfACommandLeaveAResultWithItsMessages) {
  CHost host;
  EXPECT_EQ(host.Run("SELECTPRED specis BY island.\nSELECTPRED species BY island."),
            PREDSELECT_COMMAND_ERROR);
  EXPECT_THAT(host.Error(), testing::StartsWith("Error: "));
  EXPECT_THAT(host.Error(), HasSubstr("species"));
  EXPECT_THAT(host.Error(), EndsWith("^"));
  EXPECT_THAT(host.Json(), HasSubstr("\"severity\": \"error\""));
  size_t count = 0;
  EXPECT_EQ(predselect_result_table_count(host.fSession, host.fResult, &count), PREDSELECT_OK);
  EXPECT_GT(count, 0u) << "the command behind it ran";

  const ScratchFolder folder;
  const std::string model = folder.Path("model.xml");
  EXPECT_EQ(host.Run("NAIVEBAYES species BY island /OUTFILE MODEL='" + model + "'.", model),
            PREDSELECT_COMMAND_ERROR);
  EXPECT_THAT(host.Error(), HasSubstr("the state"));
}

// Asks to stop once, at a question of that number.
struct StopAt {
  int fLeft;
  int fAsked = 0;
  static int Ask(void* self) {
    auto* stop = static_cast<StopAt*>(self);
    ++stop->fAsked;
    return --stop->fLeft == 0 ? 1 : 0;
  }
};

TEST(CFailures, ACancelledJobEndsWithWhatItHadAndTheSessionGoesOn) {
  CHost host;
  const ScratchFolder folder;
  const std::string path = folder.Path("model.bin");
  ASSERT_EQ(host.Run("NAIVEBAYES species BY island sex.", path), PREDSELECT_OK);
  Held<predselect_state> model;
  ASSERT_EQ(predselect_state_load(host.fSession, path.c_str(), &model), PREDSELECT_OK);
  const std::function<predselect_status()> jobs[] = {
      [&] { return host.Run("SELECTPRED species BY island sex. \nNAIVEBAYES species BY island."); },
      [&] { return predselect_score(host.fSession, host.fTable, model, nullptr, &host.fResult); },
      [&] { return predselect_describe(host.fSession, host.fTable, &host.fResult); }};
  for (const auto& job : jobs) {
    StopAt never{0};
    ASSERT_EQ(predselect_session_set_cancel(host.fSession, StopAt::Ask, &never), PREDSELECT_OK);
    EXPECT_EQ(job(), PREDSELECT_OK) << host.Error();
    ASSERT_GT(never.fAsked, 0);
    for (const int at : {1, (never.fAsked + 1) / 2, never.fAsked}) {
      StopAt stop{at};
      ASSERT_EQ(predselect_session_set_cancel(host.fSession, StopAt::Ask, &stop), PREDSELECT_OK);
      EXPECT_EQ(job(), PREDSELECT_CANCELLED) << "asked to stop at question " << at;
      EXPECT_EQ(host.Error(), "the job was cancelled");
      EXPECT_NE(host.fResult, nullptr);
    }
  }
  EXPECT_EQ(predselect_session_set_cancel(host.fSession, nullptr, nullptr), PREDSELECT_OK);
  predselect_session_cancel(nullptr);
  predselect_session_cancel(host.fSession);  // there is no job
  EXPECT_EQ(host.Run("SELECTPRED species BY island."), PREDSELECT_OK);
}

TEST(CFailures, AnotherThreadMayCancelAJob) {
  CHost host;
  const auto query = [](void* session) {
    std::thread([&] {
      predselect_session_cancel(static_cast<predselect_session*>(session));
    }).join();
    return 0;
  };
  ASSERT_EQ(predselect_session_set_cancel(host.fSession, query, host.fSession), PREDSELECT_OK);
  EXPECT_EQ(host.Run("NAIVEBAYES species BY island sex."), PREDSELECT_CANCELLED);
}

TEST(CFailures, CallbacksMayUseOtherSessionsAndNotTheirOwn) {
  struct Callbacks {
    CHost fHost;
    CHost fOther;
    predselect_status fOwn = PREDSELECT_OK;
    predselect_status fElse = PREDSELECT_MISUSE;
  } both;
  const auto query = [](void* data) {
    auto* self = static_cast<Callbacks*>(data);
    self->fOwn = predselect_session_set_temp_folder(self->fHost.fSession, "/");
    self->fElse =
        predselect_describe(self->fOther.fSession, self->fOther.fTable, &self->fOther.fResult);
    return 0;
  };
  ASSERT_EQ(predselect_session_set_cancel(both.fHost.fSession, query, &both), PREDSELECT_OK);
  EXPECT_EQ(both.fHost.Run("SELECTPRED species BY island."), PREDSELECT_OK);
  EXPECT_EQ(both.fOwn, PREDSELECT_MISUSE);
  EXPECT_EQ(both.fElse, PREDSELECT_OK);
}

TEST(CFailures, ABrokenInvariantEndsTheCallAndOutsideOfOneTheProcess) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  CHost host;
  const auto breaks = [](void*) -> int { MCCommon::AssertionFailed("it holds", "tests"); };
  ASSERT_EQ(predselect_session_set_cancel(host.fSession, breaks, nullptr), PREDSELECT_OK);
  EXPECT_EQ(host.Run("SELECTPRED species BY island."), PREDSELECT_BROKEN_INVARIANT);
  EXPECT_EQ(host.Error(), "internal error in tests: the condition \"it holds\" does not hold");
  EXPECT_EQ(host.fResult, nullptr);
  ASSERT_EQ(predselect_session_set_cancel(host.fSession, nullptr, nullptr), PREDSELECT_OK);
  EXPECT_EQ(host.Run("SELECTPRED species BY island."), PREDSELECT_OK);
  EXPECT_EXIT(MCCommon::AssertionFailed("it holds", "tests"),
              testing::ExitedWithCode(MCCommon::kBrokenInvariantExitCode), "Internal error");
}

}  // namespace
