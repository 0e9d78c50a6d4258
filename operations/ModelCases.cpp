#include "operations/ModelCases.h"

#include <utility>

#include "host/cases/UACaseValueReader.h"
#include "host/data/ProcedureDataSource.h"
#include "operations/ModelCategories.h"
#include "operations/NoVariable.h"
#include "operations/RequestError.h"

namespace PredSelect {

namespace {

int FindColumn(const MCHost::ITable& table, const std::string& name) {
  for (int i = 0; i < table.ColumnCount(); ++i) {
    if (table.GetVariable(i).GetName() == name) return i;
  }
  throw RequestError(NoVariable(table, name, ", which the model needs"));
}

bool HoldsTexts(const INBVariable& variable) {
  return variable.GetMeasureLevel() == INBVariable::kStringCategorical;
}

}  // namespace

// A stream of all cases that looks out for a value in columns of the wrong kind.
class ModelCases::KindCheck final : public UAProcDataSourceIter {
 public:
  explicit KindCheck(UAInputAdapter& adapter) : UAProcDataSourceIter(&adapter, false) {}

  void Refuse(int column, const INBVariable& variable) {
    const UACaseValueReader reader(GetProcDS(), column, true);
    const KOVA_Variable& found = GetAdapter()->GetDataSource().GetVariable(column);
    fWrong.emplace_back(reader, "\"" + found.GetName() + "\" holds " +
                                    (found.IsNumeric() ? "numbers" : "texts") +
                                    ", but the model was built on " +
                                    (HoldsTexts(variable) ? "texts." : "numbers."));
  }

  // Empty while no such value was met.
  const std::string& Refusal() const { return fRefusal; }

 protected:
  void FilterCases(std::size_t cases, std::vector<std::size_t>& accepted) override {
    AcceptAll(cases, accepted);
    if (fWrong.empty()) return;
    for (std::size_t i = 0; i < cases && fRefusal.empty(); ++i) Look(i);
  }

 private:
  void Look(std::size_t place) {
    StandAt(place);
    for (const auto& [reader, refusal] : fWrong) {
      if (fRefusal.empty() && !reader.IsMissing()) fRefusal = refusal;
    }
  }

  std::vector<std::pair<UACaseValueReader, std::string>> fWrong;
  std::string fRefusal;
};

ModelCases::ModelCases(const NBVarList& variables, ProcedureDataSource& source)
    : fNVariables(static_cast<std::size_t>(variables.Size())) {
  std::vector<int> columns;
  for (int position = 0; position < variables.Size(); ++position) {
    const INBVariable& variable = *variables.GetVarAt(position);
    if (variable.GetVariableRole() != INBVariable::kInput) continue;
    columns.push_back(FindColumn(source.Table(), variable.GetVariableName()));
    fPositions.push_back(position);
    (void)fSpecs.AddVariable(columns.back(),
                             variable.GetMeasureLevel() != INBVariable::kContinuous);
  }
  fpAdapter = std::make_unique<UAInputAdapter>(&fSpecs, source);
  fpStream = std::make_unique<KindCheck>(*fpAdapter);
  for (std::size_t j = 0; j < columns.size(); ++j) {
    const INBVariable& variable = *variables.GetVarAt(fPositions[j]);
    const bool isWrong = HoldsTexts(variable) == source.GetVariable(columns[j]).IsNumeric();
    if (isWrong) fpStream->Refuse(columns[j], variable);
    if (isWrong) {
      fpAdapter->FixCategories(static_cast<int>(j), {});
    } else if (variable.GetMeasureLevel() != INBVariable::kContinuous) {
      fpAdapter->FixCategories(static_cast<int>(j), CategoriesOf(variable),
                               MissingValuesOf(variable));
    }
  }
  if (fpStream->NewPass()) fpStream->SetLastPass();
}

ModelCases::~ModelCases() = default;

UAProcDataSourceIter& ModelCases::Stream() { return *fpStream; }

const MCCommon::RecordBlock& ModelCases::NextBlock(std::size_t maxCases) {
  const MCCommon::RecordBlock& block = fpStream->NextBlock(maxCases);
  if (fpStream->GetFailure() != nullptr) throw MCHost::HostIOError(*fpStream->GetFailure());
  if (!fpStream->Refusal().empty()) throw RequestError(fpStream->Refusal());
  fBlock.Reset(fNVariables, block.Cases());
  for (std::size_t j = 0; j < block.Columns(); ++j) {
    fBlock.SetColumn(static_cast<std::size_t>(fPositions[j]), block.Column(j));
  }
  return fBlock;
}

}  // namespace PredSelect
