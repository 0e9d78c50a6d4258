// The driver's dumps for debugging.

#include <array>
#include <iostream>

#include "backend/predselect/drivers/PRSUniFactory.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "feature/FSCriterion.h"
#include "feature/FSSettings.h"
#include "feature/IFSAlgorithm.h"
#include "host/data/ProcedureDataSource.h"

namespace {

template <typename Items>
void DisplayList(std::ostream& log, const std::string& label, const Items& items) {
  log << label;
  for (const auto item : items) log << ' ' << item;
  log << '\n';
}

}  // namespace

void PRSUniFactory::DisplayStatus() const {
  std::cerr << "Feature Selection status: "
            << (fStatus.IsOK() ? "OK" : (fStatus.IsError() ? "Error" : "Warning")) << '\n';
}

void PRSUniFactory::DisplayAllMessages() const {
  DisplayMessage(fStatus);
  if (fpAlgorithm != nullptr && fpAlgorithm->GetStatus() != fStatus) {
    DisplayMessage(fpAlgorithm->GetStatus());
  }
}

void PRSUniFactory::DisplayOutput() const {
  std::ostream& log = std::cerr;
  log << "Start Feature Selection Component Output\n";
  if (fpAlgorithm == nullptr) {
    log << "Feature Selection Component is not available\n";
  } else {
    for (const FSCriterion& criterion : FSCriterion::All()) DisplayCriterion(log, criterion);
    GetOutputStats();
    DisplayDeleted(log);
  }
  log << "End Feature Selection Component Output\n";
}

void PRSUniFactory::GetOutputStats() const {
  const FSSettings& settings = *fpAlgorithm->GetSettings();
  for (const FSCriterion& criterion : FSCriterion::All()) {
    if (!settings.GetCriterion(criterion.fCode)) continue;
    for (int i = 0; i < settings.GetNPredictors(); ++i) {
      std::array<double, 4> out{};
      if (!fpAlgorithm->GetPredictorStats(criterion.fCode, i, out[0], out[1], out[2], out[3])) {
        continue;
      }
      DisplayList(std::cerr, criterion.fName + (" of " + NameOf(i)) + ":", out);
    }
  }
}

std::string PRSUniFactory::NameOf(int predictor) const {
  return fpSource->GetVariable(fpSpecs->GetPredListPtr()->at(static_cast<std::size_t>(predictor)))
      .GetName();
}

void PRSUniFactory::DisplayCriterion(std::ostream& log, const FSCriterion& criterion) const {
  const FSSettings& settings = *fpAlgorithm->GetSettings();
  log << criterion.fName << '\n';
  if (!settings.GetCriterion(criterion.fCode)) {
    log << "Ranking criterion is not set\n";
    return;
  }
  log << "Ranking criterion is set\n";
  std::vector<int> top;
  std::vector<double> values;
  if (fpAlgorithm->GetTopPredictors(criterion.fCode, top, values, 0).IsError()) return;
  DisplayTop(log, "Top predictor", top, values);
  for (const bool categorical : {true, false}) {
    std::vector<int> some;
    std::vector<double> theirs;
    for (std::size_t i = 0; i < top.size(); ++i) {
      if (settings.IsCatPredictor(top[i]) != categorical) continue;
      some.push_back(top[i]);
      theirs.push_back(values[i]);
    }
    DisplayTop(log, categorical ? "Top categorical predictor" : "Top continuous predictor", some,
               theirs);
  }
}

void PRSUniFactory::DisplayTop(std::ostream& log, const std::string& kind,
                               const std::vector<int>& predictors,
                               const std::vector<double>& values) const {
  std::vector<int> ofData;
  for (const int predictor : predictors) {
    ofData.push_back(fpSpecs->GetPredListPtr()->at(static_cast<std::size_t>(predictor)));
  }
  DisplayList(log, kind + " component indices:", predictors);
  DisplayList(log, kind + " KOVA indices:", ofData);
  DisplayList(log, kind + " critical values:", values);
}

void PRSUniFactory::DisplayDeleted(std::ostream& log) const {
  const int deleted = fpAlgorithm->GetNDeletedPred();
  log << "Number of deleted predictors after screening: " << deleted << '\n';
  if (deleted == 0) log << "No predictors excluded in screening...\n";
  if (deleted == fpAlgorithm->GetSettings()->GetNPredictors()) {
    log << "All predictors excluded in screening...\n";
  }
  for (const int predictor : fpAlgorithm->GetIndicesDelPred()) {
    log << predictor << ' ' << NameOf(predictor) << '\n';
  }
}
