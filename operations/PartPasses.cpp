#include "operations/PartPasses.h"

#include <utility>

#include "backend/predselect/predsele.h"
#include "common/Cancel.h"
#include "common/Workers.h"
#include "common/parts/PartRequest.h"
#include "common/parts/Piece.h"
#include "common/state/StateBytes.h"
#include "host/data/DataTable.h"
#include "host/data/WholeTable.h"
#include "host/output/OutputDocument.h"
#include "host/output/ShowText.h"
#include "host/session/HostIOError.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"
#include "naivebayes/parts/NBPartCodes.h"
#include "operations/RequestError.h"

namespace PredSelect {

namespace {

[[noreturn]] void RefuseCodes(const std::string& why) {
  throw RequestError("the codes of a part cannot answer: " + why + ".");
}

// A session in which a command answers a request instead of running to its end.
class PartSession : public MCHost::Session {
 public:
  PartSession(MCHost::DataTable& table, MCHost::OutputDocument& document, std::string request,
              bool wantsFindings, const Surroundings& surroundings)
      : Session(table, document), fRequest(std::move(request)), fbWantsFindings(wantsFindings) {
    SetTempPath(surroundings.fTempPath);
    SetThreads(surroundings.fThreads);
    SetCancelQuery(surroundings.fIsCancelled);
    SetProgressListener(surroundings.fReportProgress);
  }

  std::string PartRequest() const override { return fRequest; }
  bool WantsFindings() const override { return fbWantsFindings; }
  void TakePartAnswer(std::string answer, std::string codes) override {
    fTaken = {std::move(answer), std::move(codes)};
  }

  PartAnswer fTaken;

 private:
  std::string fRequest;
  bool fbWantsFindings;
};

// Empty, or what is wrong with the content of a piece.
template <class T>
std::string Read(const std::string& content, T& object) {
  return StateBytes::To(content, object) ? "" : "it is damaged";
}

PartRequest RequestOf(const std::string& bytes) {
  Piece piece;
  std::string why = piece.Read(bytes);
  if (why.empty() && piece.fKind != Piece::kRequest) {
    why = std::string("it is ") + Piece::NameOf(piece.fKind);
  }
  PartRequest request;
  if (why.empty()) why = Read(piece.fContent, request);
  if (!why.empty()) throw RequestError("the request to a part cannot be answered: " + why + ".");
  return request;
}

class CancelQuery : public MCQueryCancel {
 public:
  explicit CancelQuery(const Surroundings& surroundings) : fSurroundings(surroundings) {}
  bool IsCancel() override { return fSurroundings.IsCancelled(); }

 private:
  const Surroundings& fSurroundings;
};

// What the command said went wrong.
std::string ErrorsOf(const MCHost::OutputDocument& document) {
  std::string errors;
  for (const MCHost::OutputRun& run : document.GetRuns()) {
    for (const MCHost::OutputMessage& message : run.fMessages) {
      if (message.fLevel < MCHost::OutputMessage::kError) continue;
      errors += (errors.empty() ? "" : " ") + MCHost::ShowText(message.fText);
    }
  }
  return errors.empty() ? "the command gave no answer" : errors;
}

}  // namespace

std::shared_ptr<MCHost::WholeTable> WholeOf(std::string_view ranges, std::int64_t part) {
  Piece piece;
  std::string why = piece.Read(ranges);
  if (why.empty() && piece.fKind != Piece::kRanges) {
    why = std::string("it is ") + Piece::NameOf(piece.fKind);
  }
  auto whole = std::make_shared<MCHost::WholeTable>();
  whole->fName = "the ranges";
  if (why.empty()) why = Read(piece.fContent, whole->fRanges);
  if (!why.empty()) throw RequestError("the ranges cannot be used: " + why + ".");
  if (part >= 0 && whole->fRanges.FirstCaseOf(part) < 0) {
    throw RequestError("the ranges know no part " + std::to_string(part) + ".");
  }
  whole->fPart = part;
  return whole;
}

PartAnswer AnswerPart(MCHost::DataTable& table, const std::string& request,
                      const Surroundings& surroundings) {
  const PartRequest asked = RequestOf(request);
  const MCHost::WholeTable* whole = table.Whole();
  if (whole == nullptr || whole->fRanges.Digest() != asked.fRanges) {
    throw RequestError(
        "the request to a part cannot be answered: the part was opened with other "
        "ranges than those of the request.");
  }
  MCHost::OutputDocument document;
  PartSession session(table, document, request, asked.fbFindings, surroundings);
  for (const auto& [name, values] : asked.fMacros) session.SetMacro(name, values);
  session.SetCommand(asked.fCommand);
  document.BeginRun(asked.fCommand);
  {
    const MCHost::SessionScope scope(session);
    predsele_();
  }
  if (session.IsCancelled()) throw Cancelled();
  if (session.fTaken.fAnswer.empty()) {
    throw MCHost::HostIOError("part " + std::to_string(whole->fPart), "", ErrorsOf(document));
  }
  return std::move(session.fTaken);
}

struct PartCodes::Kept {
  Kept(const Surroundings& surroundings, std::size_t mostKept)
      : fSurroundings(surroundings), fMostKept(mostKept) {}

  Surroundings fSurroundings;
  CancelQuery fQuery{fSurroundings};
  NBCancelInfo fCancel{&fQuery};
  MCCommon::Workers fWorkers{fSurroundings.fThreads};
  std::size_t fMostKept;
  std::unique_ptr<NBPartCodes> fpCodes;
};

PartCodes::PartCodes(std::string_view codes, const Surroundings& surroundings, std::size_t mostKept)
    : fpKept(std::make_unique<Kept>(surroundings, mostKept)) {
  Piece piece;
  std::string why = piece.Read(codes);
  if (why.empty() && piece.fKind != Piece::kCodes) {
    why = std::string("they are ") + Piece::NameOf(piece.fKind);
  }
  if (why.empty()) fpKept->fpCodes = NBPartCodes::From(piece.fContent);
  if (why.empty() && fpKept->fpCodes == nullptr) why = "they are damaged";
  if (!why.empty()) RefuseCodes(why);
}

PartCodes::~PartCodes() = default;

std::string PartCodes::Answer(const std::string& request) {
  NBPartQuestion question;
  std::string why = Read(RequestOf(request).fContent, question);
  NBPartSums sums;
  Kept& kept = *fpKept;
  if (why.empty() &&
      !kept.fpCodes->Answer(question, kept.fCancel, kept.fWorkers, sums, kept.fMostKept)) {
    if (kept.fCancel.IsCancel()) throw Cancelled();
    why = "they are of other variables or categories than the request";
  }
  if (!why.empty()) RefuseCodes(why);
  return Piece{Piece::kSums, StateBytes::Digest(request), StateBytes::Of(sums)}.Bytes();
}

std::string AnswerFromCodes(std::string_view codes, const std::string& request,
                            const Surroundings& surroundings) {
  return PartCodes(codes, surroundings, 0).Answer(request);
}

}  // namespace PredSelect
