#include "operations/ModelCases.h"

#include <utility>

#include "host/cases/UACaseValueReader.h"
#include "host/data/ProcedureDataSource.h"
#include "operations/ModelCategories.h"
#include "operations/NoVariable.h"
#include "operations/RequestError.h"

namespace PredSelect {

namespace {

constexpr const char* kForModel = ", which the model needs";
constexpr const char* kForTarget = ", which the model predicts";

int FindColumn(const MCHost::ITable& table, const std::string& name, const char* what) {
  for (int i = 0; i < table.ColumnCount(); ++i) {
    if (table.GetVariable(i).GetName() == name) return i;
  }
  throw RequestError(NoVariable(table, name, what));
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

ModelCases::ModelCases(const NBVarList& variables, ProcedureDataSource& source, Columns columns)
    : fNVariables(static_cast<std::size_t>(variables.Size())) {
  for (int position = 0; position < variables.Size(); ++position) {
    const INBVariable& variable = *variables.GetVarAt(position);
    if (variable.GetVariableRole() != INBVariable::kInput) continue;
    AddColumn(variable, FindColumn(source.Table(), variable.GetVariableName(), kForModel),
              position);
  }
  if (columns == Columns::kInputsAndTarget) {
    const int position = variables.GetTargetIndex();
    const INBVariable& target = *variables.GetVarAt(position);
    fTarget = static_cast<int>(fColumns.size());
    AddColumn(target, FindColumn(source.Table(), target.GetVariableName(), kForTarget), position);
    (void)fSpecs.SetWeightVar();
  }
  fpAdapter = std::make_unique<UAInputAdapter>(&fSpecs, source);
  fpStream = std::make_unique<KindCheck>(*fpAdapter);
  FixCategories(variables, source);
  if (fpStream->NewPass()) fpStream->SetLastPass();
}

void ModelCases::AddColumn(const INBVariable& variable, int column, int position) {
  fColumns.push_back(column);
  fPositions.push_back(position);
  (void)fSpecs.AddVariable(column, variable.GetMeasureLevel() != INBVariable::kContinuous);
}

void ModelCases::FixCategories(const NBVarList& variables, const ProcedureDataSource& source) {
  for (std::size_t j = 0; j < fColumns.size(); ++j) {
    const INBVariable& variable = *variables.GetVarAt(fPositions[j]);
    const auto recordVar = static_cast<int>(j);
    if (HoldsTexts(variable) == source.GetVariable(fColumns[j]).IsNumeric()) {
      fpStream->Refuse(fColumns[j], variable);
      fpAdapter->FixCategories(recordVar, {});
    } else if (variable.GetMeasureLevel() != INBVariable::kContinuous && recordVar != fTarget) {
      fpAdapter->FixCategories(recordVar, CategoriesOf(variable), MissingValuesOf(variable));
    }
  }
}

ModelCases::~ModelCases() = default;

UAProcDataSourceIter& ModelCases::Stream() { return *fpStream; }

const MCCommon::RecordBlock& ModelCases::NextBlock(std::size_t maxCases) {
  const MCCommon::RecordBlock& block = fpStream->NextBlock(maxCases);
  if (fpStream->GetFailure() != nullptr) throw MCHost::HostIOError(*fpStream->GetFailure());
  if (!fpStream->Refusal().empty()) throw RequestError(fpStream->Refusal());
  fBlock.Reset(fNVariables, block.Cases());
  fpWeights = nullptr;
  if (block.Cases() == 0) return fBlock;  // no columns either, where there are no cases at all
  for (std::size_t j = 0; j < fPositions.size(); ++j) {
    fBlock.SetColumn(static_cast<std::size_t>(fPositions[j]), block.Column(j));
  }
  const int weight = fSpecs.GetWeightPosition();
  if (weight >= 0) fpWeights = block.Column(static_cast<std::size_t>(weight));
  return fBlock;
}

int ModelCases::TargetValues() const {
  return fpAdapter->GetCatVarSize(fColumns[static_cast<std::size_t>(fTarget)]);
}

KOVA_Value ModelCases::TargetValue(int code) const {
  int column = -1;
  return fpAdapter->DecodeCatValue(fTarget, code, column);
}

}  // namespace PredSelect
