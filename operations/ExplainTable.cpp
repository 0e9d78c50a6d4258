#include "operations/ExplainTable.h"

#include <string>
#include <vector>

#include "host/command/VarSpecObj.h"
#include "host/data/DataTable.h"
#include "host/data/ProcedureDataSource.h"
#include "host/output/OutputDocument.h"
#include "host/output/ShowText.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"
#include "naivebayes/NBAlgorithm.h"
#include "naivebayes/model/NBEvidence.h"
#include "naivebayes/model/NBScoredBlock.h"
#include "operations/DocumentParts.h"
#include "operations/ModelCases.h"
#include "operations/RequestError.h"
#include "operations/ShowEvidence.h"

namespace PredSelect {

namespace {

constexpr const char* kRoot = "ExplainedEvidence";

std::vector<int> AddVariables(KOVA_DataSource& source, std::size_t n) {
  const VarSpecObj role("", kRoot, CommandDescriptor("score", ""), source, false);
  std::vector<KovaVarName> names;
  if (!role.NewVarNamesByRoot(KovaVarName(kRoot), static_cast<int>(n), names)) {
    throw RequestError("\"" + std::string(kRoot) + "\" cannot name new variables.");
  }
  std::vector<int> columns;
  for (const KovaVarName& name : names) {
    columns.push_back(source.MakeVariable(name.GetName(), 0));
    source.GetVariable(columns.back()).SetMeasurementLevel(KOVA_Variable::kScale);
  }
  return columns;
}

class EvidenceWriter {
 public:
  EvidenceWriter(const NBAlgorithm& model, KOVA_DataSource& source)
      : fEvidence(model),
        fPerInput(fEvidence.GetNClasses() == 2 ? 1 : fEvidence.GetNClasses()),
        fColumns(AddVariables(source, fEvidence.GetNInputs() * fPerInput)) {}

  void Store(const MCCommon::RecordBlock& block, ModelCases& cases) {
    KOVA_InputCaseIterator& table = *cases.Stream().GetProcDS();
    if (!table.MayStore()) return;
    fEvidence.SetBlock(block);
    const std::size_t* places = cases.Stream().GetBlockPlaces();
    for (std::size_t column = 0; column < fColumns.size(); ++column) {
      double* cells = table.NumberColumn(fColumns[column]);
      const std::size_t input = column / fPerInput;
      const std::size_t k = column % fPerInput;
      for (std::size_t i = 0; i < block.Cases(); ++i) {
        const double* evidence = fEvidence.OfCase(i, input);
        cells[places[i]] = fPerInput == 1 ? evidence[1] - evidence[0] : evidence[k];
      }
    }
  }

 private:
  NBEvidence fEvidence;
  std::size_t fPerInput;
  std::vector<int> fColumns;
};

}  // namespace

Outcome ExplainTable(MCHost::DataTable& table, const INBAlgorithm& model,
                     MCHost::OutputDocument& document, const Surroundings& surroundings) {
  MCHost::Session session(table, document);
  const MCHost::SessionScope scope(session);
  RecordData(document, table.CaseCount(), table.ColumnCount());
  MCHost::OutputRun& run = document.BeginRun("explain");
  ProcedureDataSource source;
  ModelCases cases(model.GetVarList(), source);
  const int before = table.ColumnCount();
  EvidenceWriter writer(dynamic_cast<const NBAlgorithm&>(model), source);
  const std::size_t most =
      NBScoredBlock::PreferredCases(model.GetNTargetCategories(), model.GetNumberOfInputVars());
  std::size_t done = 0;
  for (;;) {
    const MCCommon::RecordBlock& block = cases.NextBlock(most);
    if (block.Cases() == 0) break;
    if (surroundings.IsCancelled()) return Outcome::kCancelled;
    writer.Store(block, cases);
    done += block.Cases();
    if (!surroundings.fReportProgress) continue;
    surroundings.fReportProgress(MCHost::KeyText(
        "^1: ^2 cases", {MCHost::KeyText("Explaining the cases"), std::to_string(done)}));
  }
  RecordNewVariables(table, before, run);
  ShowBaseValues(model);
  ShowEvidence(model);
  run.fbCompleted = true;
  return Outcome::kCompleted;
}

}  // namespace PredSelect
