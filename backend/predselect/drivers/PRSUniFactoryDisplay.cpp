// The driver's dumps for debugging.

#include <iostream>

#include "backend/predselect/drivers/PRSUniFactory.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "feature/FSCriterion.h"
#include "feature/FSSettings.h"
#include "feature/IFSAlgorithm.h"
#include "host/data/ProcedureDataSource.h"

namespace {

void DisplayList(std::ostream& log, const std::string& label,
                 const std::vector<std::string>& items) {
  log << label;
  for (const std::string& item : items) log << ' ' << item;
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
    DisplayDeleted(log);
  }
  log << "End Feature Selection Component Output\n";
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
  std::vector<std::string> texts;
  texts.reserve(values.size());
  for (const double value : values) texts.push_back(std::to_string(value));
  DisplayTop(log, "Top predictor", top);
  DisplayList(log, "Top predictor critical values:", texts);
  for (const bool categorical : {true, false}) {
    std::vector<int> some;
    for (const int predictor : top) {
      if (settings.IsCatPredictor(predictor) == categorical) some.push_back(predictor);
    }
    DisplayTop(log, categorical ? "Top categorical predictor" : "Top continuous predictor", some);
  }
}

void PRSUniFactory::DisplayTop(std::ostream& log, const std::string& kind,
                               const std::vector<int>& predictors) const {
  std::vector<std::string> own, ofData;
  for (const int predictor : predictors) {
    own.push_back(std::to_string(predictor));
    ofData.push_back(
        std::to_string(fpSpecs->GetPredListPtr()->at(static_cast<std::size_t>(predictor))));
  }
  DisplayList(log, kind + " component indices:", own);
  DisplayList(log, kind + " KOVA indices:", ofData);
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
