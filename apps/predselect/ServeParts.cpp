#include "apps/predselect/ServeParts.h"

#include <signal.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <memory>
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

// A path as a pattern that fits it alone, so that its folders tell columns as those of all parts
// do.
std::string PatternOf(const std::string& path) {
  std::string pattern;
  for (const char c : path) {
    const bool isSpecial = std::strchr("*?[]{}", c) != nullptr;
    pattern += isSpecial ? std::string("[") + c + "]" : std::string(1, c);
  }
  const std::size_t last = pattern.size() - 1;
  return pattern[last] == ']' ? pattern : pattern.substr(0, last) + "[" + pattern[last] + "]";
}

class PartServer {
 public:
  explicit PartServer(const Options& options)
      : fOptions(options),
        fAround(ProgramSurroundings(options, fProgress)),
        fShare(options.fData.fMaxKeptBytes / static_cast<std::size_t>(options.fServing)) {
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
    Part(std::int64_t number, std::string path) : fNumber(number), fPath(std::move(path)) {}

    std::int64_t fNumber;
    std::string fPath;
    std::unique_ptr<MCHost::DataTable> fpTable;
    std::unique_ptr<PredSelect::PartCodes> fpCodes;
  };

  // Numbers and paths in turn. The ranges of all; and of each the notes of its source and of its
  // columns.
  std::string Open(const std::vector<std::string>& words) {
    std::vector<std::string> pieces, answer(1);
    std::size_t room = fShare;
    for (std::size_t i = 0; i + 1 < words.size(); i += 2) {
      Part& part = fParts.emplace_back(std::stoll(words[i]), words[i + 1]);
      DataOptions data = fOptions.fData;
      data.fFile = PatternOf(part.fPath);
      data.fMaxKeptBytes = room;
      part.fpTable = OpenTable(data, fProgress);
      room -= std::min(room, part.fpTable->KeptBytes());
      const TableRanges ranges = PredSelect::FindRanges(*part.fpTable, part.fNumber, fAround);
      pieces.push_back(Piece{Piece::kRanges, 0, StateBytes::Of(ranges)}.Bytes());
      answer.push_back(PackTexts(part.fpTable->SourceNotes()));
      answer.push_back(PackTexts(part.fpTable->ColumnNotes()));
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
      PredSelect::PartAnswer answer = AnswerOf(part, request);
      if (over == MCHost::PassOver::kRowsKeep) {
        const std::size_t room = fShare / fParts.size();
        part.fpCodes = std::make_unique<PredSelect::PartCodes>(
            answer.fCodes, fAround,
            std::min(kMostKept / fParts.size(), room - std::min(room, answer.fCodes.size())));
      }
      pieces.push_back(std::move(answer.fAnswer));
    }
    return Merge(pieces);
  }

  // What went wrong names the file.
  PredSelect::PartAnswer AnswerOf(Part& part, const std::string& request) {
    try {
      return PredSelect::AnswerPart(*part.fpTable, request, fAround);
    } catch (const MCHost::HostIOError& error) {
      throw MCHost::HostIOError(part.fPath, error.Place(), error.Reason());
    }
  }

  std::string Merge(const std::vector<std::string>& pieces) const {
    std::vector<PredSelect::NamedPiece> named;
    for (std::size_t i = 0; i < pieces.size(); ++i) named.push_back({pieces[i], fParts[i].fPath});
    return PredSelect::MergePieces(named);
  }

  const Options& fOptions;
  ProgressLine fProgress{false};
  PredSelect::Surroundings fAround;
  std::size_t fShare;  // bytes of --memory for the cells here, and as many for the cases
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
