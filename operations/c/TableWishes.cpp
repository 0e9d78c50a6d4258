#include "operations/c/TableWishes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "host/data/ReadingOptions.h"
#include "operations/RequestError.h"
#include "operations/c/Arguments.h"
#include "operations/c/Guard.h"
#include "operations/c/Handles.h"

namespace PredSelectC {

namespace {

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

}  // namespace

PredSelect::TableOptions WishesOf(const predselect_table_options& given) {
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
  for (const std::string& text : TextArguments(given.missing, given.n_missing, "missing")) {
    options.fMissing.push_back(CodesOf(text));
  }
  options.fWeight = TextArgument(given.weight, "weight", "");
  return options;
}

predselect_table* MakeTable(std::shared_ptr<MCHost::DataTable> table, std::string name,
                            const PredSelect::TableOptions& wishes) {
  auto made = std::make_unique<predselect_table>();
  made->fName = std::move(name);
  made->fpTable = std::move(table);
  PredSelect::PrepareTable(*made->fpTable, wishes);
  for (const std::string& note : made->fpTable->Notes()) made->fNotes += note + "\n";
  return made.release();
}

}  // namespace PredSelectC
