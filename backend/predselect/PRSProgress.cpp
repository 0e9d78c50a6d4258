#include "backend/predselect/PRSProgress.h"

#include <string>

#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

void PRSProgress::Report(const ProgressReport& report) {
  const long records = report.DiscreteMeasure("records");
  const std::string text =
      records >= 0 ? std::to_string(records) + " cases read"
                   : std::to_string(report.DiscreteMeasure("predictors")) + " predictors ranked";
  MCHost::CurrentSession().ReportProgress(text);
}
