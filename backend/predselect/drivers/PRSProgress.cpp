#include "backend/predselect/drivers/PRSProgress.h"

#include <cmath>
#include <string>

#include "host/output/ShowText.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

using MCHost::KeyText;

namespace {

std::string Cases(const char* phase, std::int64_t cases) {
  return KeyText("^1: ^2 cases", {KeyText(phase), std::to_string(cases)});
}

std::string SelectionText(const ProgressReport& report) {
  const auto count = [&report](const char* name) {
    return std::to_string(report.DiscreteMeasure(name));
  };
  return KeyText("Selecting predictors: ^1 of at most ^2 in the subset, ^3 candidates left, ^4 s",
                 {count("selectedPredictors"), count("maxPredictors"), count("candidatePredictors"),
                  std::to_string(std::lround(report.ScaleMeasure("elapsedTime")))});
}

std::string TextOf(const ProgressReport& report) {
  const long trained = report.DiscreteMeasure("trainRecords");
  const long read = report.DiscreteMeasure("records");
  if (report.DiscreteMeasure("selectedPredictors") >= 0) return SelectionText(report);
  if (trained >= 0) return Cases("Training the model", trained);
  if (read >= 0) return Cases("Reading the data", read);
  return KeyText("Ranking: ^1 predictors", {std::to_string(report.DiscreteMeasure("predictors"))});
}

}  // namespace

void PRSProgress::Report(const ProgressReport& report) {
  MCHost::CurrentSession().ReportProgress(TextOf(report));
}

void PRSProgress::Show(const char* phase, std::int64_t cases) {
  MCHost::CurrentSession().ReportProgress(Cases(phase, cases));
}
