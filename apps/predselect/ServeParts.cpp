#include "apps/predselect/ServeParts.h"

#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdint>
#include <exception>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "apps/predselect/ExitCode.h"
#include "apps/predselect/Interrupt.h"
#include "apps/predselect/JobFrames.h"
#include "apps/predselect/OpenTable.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/ProgramSurroundings.h"
#include "apps/predselect/ProgressLine.h"
#include "common/parts/Piece.h"
#include "common/state/StateBytes.h"
#include "host/data/DataTable.h"
#include "host/data/IPartPasses.h"
#include "host/session/HostIOError.h"
#include "operations/FindRanges.h"
#include "operations/MergePieces.h"
#include "operations/PartPasses.h"
#include "operations/RequestError.h"
#include "operations/TableOptions.h"

namespace PredSelectApp {

namespace {

// Bytes of products that the parts keep from step to step, together.
constexpr std::size_t kMostKept = std::size_t{1} << 28;

class PartServer {
 public:
  explicit PartServer(const Options& options)
      : fOptions(options), fAround(ProgramSurroundings(options, fProgress)) {
    fAround.fReportProgress = nullptr;
  }

  std::string Answer(const JobFrame& asked) {
    if (asked.fKind == JobFrame::kOpen) return Open(UnpackTexts(asked.fBytes));
    if (asked.fKind == JobFrame::kPass) return Pass(asked.fBytes);
    for (Part& part : fParts) {
      PredSelect::TableOptions said;
      said.fpWhole = PredSelect::WholeOf(asked.fBytes, part.fNumber);
      PredSelect::PrepareTable(*part.fpTable, said);
    }
    return "";
  }

 private:
  struct Part {
    std::int64_t fNumber;
    std::string fPath;
    std::unique_ptr<MCHost::DataTable> fpTable;
    std::unique_ptr<PredSelect::PartCodes> fpCodes;
  };

  // Numbers and paths in turn. The ranges of all, and the notes of how they were read.
  std::string Open(const std::vector<std::string>& words) {
    std::vector<std::string> pieces, names, answer(1);
    std::set<std::string> notes;
    for (std::size_t i = 0; i + 1 < words.size(); i += 2) {
      DataOptions data = fOptions.fData;
      data.fFile = words[i + 1];
      Part part{std::stoll(words[i]), data.fFile, OpenTable(data, fProgress), nullptr};
      const TableRanges ranges = PredSelect::FindRanges(*part.fpTable, part.fNumber, fAround);
      pieces.push_back(Piece{Piece::kRanges, 0, StateBytes::Of(ranges)}.Bytes());
      for (const std::string& note : part.fpTable->Notes()) {
        if (notes.insert(note).second) answer.push_back(note);
      }
      fParts.push_back(std::move(part));
    }
    answer[0] = Merge(pieces);
    return PackTexts(answer);
  }

  std::string Pass(const std::string& bytes) {
    const auto over = static_cast<MCHost::PassOver>(bytes.at(0));
    const std::string request = bytes.substr(1);
    std::vector<std::string> pieces;
    for (Part& part : fParts) {
      if (over == MCHost::PassOver::kCodes) {
        pieces.push_back(part.fpCodes->Answer(request));
        continue;
      }
      PredSelect::PartAnswer answer = PredSelect::AnswerPart(*part.fpTable, request, fAround);
      if (over == MCHost::PassOver::kRowsKeep) {
        part.fpCodes = std::make_unique<PredSelect::PartCodes>(answer.fCodes, fAround,
                                                               kMostKept / fParts.size());
      }
      pieces.push_back(std::move(answer.fAnswer));
    }
    return Merge(pieces);
  }

  std::string Merge(const std::vector<std::string>& pieces) const {
    std::vector<PredSelect::NamedPiece> named;
    for (std::size_t i = 0; i < pieces.size(); ++i) named.push_back({pieces[i], fParts[i].fPath});
    return PredSelect::MergePieces(named);
  }

  const Options& fOptions;
  ProgressLine fProgress{false};
  PredSelect::Surroundings fAround;
  std::vector<Part> fParts;
};

// A failure as texts: what it is, and what it says.
std::string FailureTexts(const std::exception& error) {
  if (const auto* trouble = dynamic_cast<const MCHost::HostIOError*>(&error)) {
    return PackTexts({"data", trouble->File(), trouble->Place(), trouble->Reason()});
  }
  if (const auto* request = dynamic_cast<const PredSelect::RequestError*>(&error)) {
    return PackTexts({"usage", request->TextWithDashes()});
  }
  return PackTexts({"usage", error.what()});
}

}  // namespace

int ServeParts(const Options& options) {
  // With the program that asks this one ends, too, and leaves it to say so.
  SayNothing();
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  PartServer server(options);
  while (const std::optional<JobFrame> asked = ReadFrame(STDIN_FILENO)) {
    JobFrame answer;
    try {
      answer.fBytes = server.Answer(*asked);
    } catch (const PredSelect::Cancelled&) {
      return kCancelled;
    } catch (const std::exception& error) {
      answer = {JobFrame::kFailed, FailureTexts(error)};
    }
    if (!WriteFrame(STDOUT_FILENO, answer)) return kDataError;
  }
  return kCompleted;
}

}  // namespace PredSelectApp
