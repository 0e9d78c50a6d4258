#include "operations/c/TableWishes.h"

#include <cstdint>
#include <utility>

#include "operations/PartPasses.h"
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

}  // namespace

PredSelect::TableOptions WishesOf(const predselect_table_options& given) {
  PredSelect::TableOptions options;
  if (given.ranges != nullptr) {
    if (given.schema != nullptr || given.weight != nullptr ||
        given.n_levels + given.n_reading > 0) {
      throw Misuse("schema, weight, levels and reading come from the ranges");
    }
    if (given.part < 0) throw Misuse("part is no number of a part");
    options.fpWhole = PredSelect::WholeOf(BytesArgument(given.ranges, "ranges"), given.part);
    return options;
  }
  if (given.schema != nullptr) {
    options.fSchema =
        MCHost::TableSchema::Parse(TextArgument(given.schema, "schema"), "the schema");
  }
  if (given.n_levels > 0) Given(given.levels, "levels");
  for (std::size_t i = 0; i < given.n_levels; ++i) {
    const predselect_variable_level& level = given.levels[i];
    options.fLevels.emplace_back(TextArgument(level.variable, "level"), LevelOf(level.level));
  }
  options.fWeight = TextArgument(given.weight, "weight", "");
  options.fMissing = ReadingOf(given).fMissing;
  return options;
}

MCHost::ReadingOptions ReadingOf(const predselect_table_options& given) {
  MCHost::ReadingOptions reading;
  if (given.n_reading > 0) Given(given.reading, "reading");
  for (std::size_t i = 0; i < given.n_reading; ++i) {
    const std::string name = TextArgument(given.reading[i].name, "reading");
    const std::string word = TextArgument(given.reading[i].word, "reading", "");
    const std::string wrong = MCHost::SetReadingOption(reading, name, word);
    if (!wrong.empty()) throw PredSelect::RequestError(name, wrong);
  }
  return reading;
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
