#include "backend/predselect/drivers/PRSParts.h"

#include <cctype>
#include <utility>

#include "host/data/ITable.h"
#include "host/data/WholeTable.h"
#include "host/output/ShowText.h"
#include "host/session/HostIOError.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"
#include "modelfiles/ComponentFile.h"

using MCHost::KeyText;

namespace {

MCHost::PassOver OverOf(PartRequest::Kind kind) {
  if (kind == PartRequest::kSteps || kind == PartRequest::kTerms) return MCHost::PassOver::kCodes;
  return kind == PartRequest::kEncode ? MCHost::PassOver::kRowsKeep : MCHost::PassOver::kRows;
}

// The macros that a text names.
std::vector<std::pair<std::string, std::vector<std::string>>> MacrosIn(const std::string& text) {
  const auto isInName = [](char c) {
    return (c & 0x80) != 0 || std::isalnum(static_cast<unsigned char>(c)) || c == '_';
  };
  std::vector<std::pair<std::string, std::vector<std::string>>> macros;
  for (std::size_t at = text.find('!'); at != text.npos; at = text.find('!', at + 1)) {
    std::size_t end = at + 1;
    while (end < text.size() && isInName(text[end])) ++end;
    const std::string name = text.substr(at + 1, end - at - 1);
    const std::vector<std::string>* values = MCHost::CurrentSession().FindMacro(name);
    if (values != nullptr) macros.emplace_back(name, *values);
  }
  return macros;
}

}  // namespace

PRSParts::PRSParts(const MCHost::ITable& table) : fpWhole(table.Whole()) {}

bool PRSParts::AreThere() const { return fpWhole != nullptr && fpWhole->fpPasses != nullptr; }

PartRequest PRSParts::Request(PartRequest::Kind kind, std::vector<int> numbers,
                              std::string content) const {
  const std::string& command = MCHost::CurrentSession().CommandText();
  return {kind,
          fpWhole->fRanges.Digest(),
          command,
          MacrosIn(command),
          std::move(numbers),
          std::move(content)};
}

std::string PRSParts::Ask(const PartRequest& request, Piece::Kind kind) const {
  const std::string bytes = Piece{Piece::kRequest, 0, StateBytes::Of(request)}.Bytes();
  Piece answer;
  std::string why = answer.Read(fpWhole->fpPasses->Pass(OverOf(request.fKind), bytes));
  if (why.empty() && answer.fKind != kind) {
    why = KeyText("it is ^1", {Piece::NameOf(answer.fKind)});
  }
  if (why.empty() && answer.fOf != StateBytes::Digest(bytes))
    why = KeyText("it is of another request");
  if (!why.empty()) Throw(why);
  return std::move(answer.fContent);
}

std::unique_ptr<IFSAlgorithm> PRSParts::ComponentOf(const UAPartCounts& counts) const {
  ComponentFile counted;
  const bool isRead = ReadComponentBytes(counts.fComponent, counted).empty();
  if (!isRead || counted.fpFeature == nullptr) ThrowDamaged();
  return std::move(counted.fpFeature);
}

void PRSParts::ThrowDamaged() const { Throw(KeyText("it is damaged")); }

void PRSParts::Throw(const std::string& why) const {
  throw MCHost::HostIOError(fpWhole->fName, KeyText("the answer of the parts"), why);
}

UAPartCounts PRSParts::AskCounts(const PartRequest& request) const {
  UAPartCounts counts;
  AskFor(request, Piece::kCounts, counts);
  const std::string why = WhyNotAll(counts.fNCases);
  if (why.empty()) return counts;
  Throw(why);
}

std::string PRSParts::WhyNotAll(std::int64_t cases) const {
  const std::int64_t all = fpWhole->fRanges.CaseCount();
  if (cases == all) return "";
  return KeyText("it holds ^1 cases of ^2 of the parts...",
                 {std::to_string(cases), std::to_string(all)});
}

std::optional<PartRequest> PRSPartRequest() {
  Piece piece;
  const std::string bytes = MCHost::CurrentSession().PartRequest();
  if (bytes.empty() || !piece.Read(bytes).empty()) return {};
  PartRequest request;
  return StateBytes::To(piece.fContent, request) ? std::optional(request) : std::nullopt;
}

void PRSAnswer(Piece::Kind kind, std::string content, std::string codes) {
  MCHost::ISession& session = MCHost::CurrentSession();
  const std::uint64_t of = StateBytes::Digest(session.PartRequest());
  if (!codes.empty()) codes = Piece{Piece::kCodes, of, std::move(codes)}.Bytes();
  session.TakePartAnswer(Piece{kind, of, std::move(content)}.Bytes(), std::move(codes));
}
