#include "backend/predselect/drivers/PRSMultiParts.h"

#include <utility>

#include "backend/predselect/drivers/PRSMultiRun.h"
#include "backend/predselect/drivers/PRSProgress.h"
#include "common/state/StateBytes.h"
#include "host/cases/MCStopProcessor.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/WholeTable.h"
#include "host/output/ShowText.h"
#include "host/session/HostIOError.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"
#include "modelfiles/ComponentFile.h"
#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/parts/NBPartClassified.h"

PRSMultiParts::PRSMultiParts(PRSMultiRun& run, std::vector<int> screened)
    : fRun(run), fParts(run.Source().Table()), fScreened(std::move(screened)) {}

template <class T>
bool PRSMultiParts::Pass(const PartRequest& request, Piece::Kind kind, T& answer) {
  try {
    fParts.AskFor(request, kind, answer);
    return true;
  } catch (const MCHost::HostIOError& error) {
    fFailure = error.what();
    return false;
  }
}

bool PRSMultiParts::Count(NBPartCounts& counts) {
  if (!Pass(fParts.Request(PartRequest::kEncode, fScreened), Piece::kNaiveCounts, counts)) {
    return false;
  }
  fFailure = fParts.WhyNotAll(counts.fNCases);
  return fFailure.empty();
}

bool PRSMultiParts::Ask(const NBPartQuestion& question, NBPartSums& sums) {
  const auto kind = question.fCandidates.empty() ? PartRequest::kTerms : PartRequest::kSteps;
  return Pass(fParts.Request(kind, {}, StateBytes::Of(question)), Piece::kSums, sums);
}

bool PRSMultiParts::Classify(const INBAlgorithm& model, NBPartClassified& classified) {
  PartRequest request = fParts.Request(PartRequest::kClassify, fScreened, ComponentBytes(model));
  request.fbFindings = MCHost::CurrentSession().WantsFindings();
  if (!Pass(request, Piece::kClassified, classified)) return false;
  fFailure = fParts.WhyNotAll(classified.fNCases);
  if (fFailure.empty() && classified.fNTargets != model.GetNTargetCategories()) {
    fFailure = MCHost::KeyText("the parts classified into other categories");
  }
  return fFailure.empty();
}

bool PRSMultiParts::IsPassComplete() {
  if (fRun.IsStopped()) return false;
  if (fFailure.empty()) return true;
  fRun.AdapterMessages().ReadFailed(fFailure);
  return fRun.Fail(MCNaive::kDataUnusable);
}
