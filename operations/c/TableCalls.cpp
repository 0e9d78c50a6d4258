#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "host/data/ArrowCDataInterface.h"
#include "host/data/MemoryTable.h"
#include "host/data/ReadingOptions.h"
#include "operations/RequestError.h"
#include "operations/TableOptions.h"
#include "operations/c/Arguments.h"
#include "operations/c/Guard.h"
#include "operations/c/Handles.h"

namespace PredSelectC {

namespace {

// A stream that was taken over, released unless somebody else takes it.
class TakenStream {
 public:
  explicit TakenStream(ArrowArrayStream* stream) : fpStream(stream) {}
  TakenStream(const TakenStream&) = delete;
  TakenStream& operator=(const TakenStream&) = delete;
  ~TakenStream() {
    if (fpStream != nullptr && fpStream->release != nullptr) fpStream->release(fpStream);
  }
  ArrowArrayStream& Get() const { return Given(fpStream, "stream"); }

 private:
  ArrowArrayStream* fpStream;
};

KOVA_Variable::MeasurementLevel LevelOf(std::int32_t level) {
  switch (level) {
    case PREDSELECT_NOMINAL:
      return KOVA_Variable::kNominal;
    case PREDSELECT_ORDINAL:
      return KOVA_Variable::kOrdinal;
    case PREDSELECT_SCALE:
      return KOVA_Variable::kScale;
    default:
      throw Misuse("a level is none of PREDSELECT_NOMINAL, PREDSELECT_ORDINAL, PREDSELECT_SCALE");
  }
}

MCHost::MissingCodes CodesOf(const std::string& text) {
  std::optional<MCHost::MissingCodes> codes = MCHost::ParseMissingCodes(text);
  if (!codes) {
    throw PredSelect::RequestError("missing", "\"" + text + "\" is not variable=code,code.");
  }
  return *std::move(codes);
}

PredSelect::TableOptions OptionsOf(const predselect_table_options& given) {
  PredSelect::TableOptions options;
  if (given.schema != nullptr) {
    options.fSchema =
        MCHost::TableSchema::Parse(TextArgument(given.schema, "schema"), "the schema");
  }
  if (given.n_levels > 0) Given(given.levels, "levels");
  for (std::size_t i = 0; i < given.n_levels; ++i) {
    const predselect_variable_level& level = given.levels[i];
    options.fLevels.emplace_back(TextArgument(level.variable, "level"), LevelOf(level.level));
  }
  if (given.n_missing > 0) Given(given.missing, "missing");
  for (std::size_t i = 0; i < given.n_missing; ++i) {
    options.fMissing.push_back(CodesOf(TextArgument(given.missing[i], "missing")));
  }
  options.fWeight = TextArgument(given.weight, "weight", "");
  return options;
}

}  // namespace

}  // namespace PredSelectC

using namespace PredSelectC;

predselect_status predselect_table_open(predselect_session* session, ArrowArrayStream* stream,
                                        const predselect_table_options* options,
                                        predselect_table** table) {
  const TakenStream taken(stream);
  Clear(table);
  return Guarded(session, [&] {
    predselect_table*& out = Given(table, "table");
    const predselect_table_options given = GivenOptions(options);
    const PredSelect::TableOptions wishes = OptionsOf(given);
    auto made = std::make_unique<predselect_table>();
    made->fName = TextArgument(given.name, "name", "data");
    made->fpTable = std::make_shared<MCHost::MemoryTable>(&taken.Get(), made->fName);
    PredSelect::PrepareTable(*made->fpTable, wishes);
    for (const std::string& note : made->fpTable->Notes()) made->fNotes += note + "\n";
    out = made.release();
  });
}

void predselect_table_close(predselect_table* table) { delete table; }

predselect_status predselect_table_notes(predselect_session* session, const predselect_table* table,
                                         const char** notes) {
  Clear(notes);
  return Guarded(session, [&] { Given(notes, "notes") = Given(table, "table").fNotes.c_str(); });
}
