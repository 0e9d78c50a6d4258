#include "backend/predselect/drivers/PRSProgress.h"

#include <cmath>
#include <string>

#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

namespace {

std::string Cases(const char* phase, std::int64_t cases) {
  return std::string(phase) + ": " + std::to_string(cases) + " cases";
}

std::string SelectionText(const ProgressReport& report) {
  const auto count = [&report](const char* name) {
    return std::to_string(report.DiscreteMeasure(name));
  };
  return "Selecting predictors: " + count("selectedPredictors") + " of at most " +
         count("maxPredictors") + " in the subset, " + count("candidatePredictors") +
         " candidates left, " + std::to_string(std::lround(report.ScaleMeasure("elapsedTime"))) +
         " s";
}

std::string TextOf(const ProgressReport& report) {
  const long trained = report.DiscreteMeasure("trainRecords");
  const long read = report.DiscreteMeasure("records");
  if (report.DiscreteMeasure("selectedPredictors") >= 0) return SelectionText(report);
  if (trained >= 0) return Cases("Training the model", trained);
  if (read >= 0) return Cases("Reading the data", read);
  return "Ranking: " + std::to_string(report.DiscreteMeasure("predictors")) + " predictors";
}

}  // namespace

void PRSProgress::Report(const ProgressReport& report) {
  MCHost::CurrentSession().ReportProgress(TextOf(report));
}

void PRSProgress::Show(const char* phase, std::int64_t cases) {
  MCHost::CurrentSession().ReportProgress(Cases(phase, cases));
}
