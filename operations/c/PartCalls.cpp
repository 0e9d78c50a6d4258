#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/parts/Piece.h"
#include "common/state/StateBytes.h"
#include "host/data/PartsTable.h"
#include "host/data/WholeTable.h"
#include "host/session/HostIOError.h"
#include "operations/FindRanges.h"
#include "operations/MergePieces.h"
#include "operations/PartPasses.h"
#include "operations/c/Arguments.h"
#include "operations/c/Guard.h"
#include "operations/c/Handles.h"

namespace PredSelectC {

namespace {

// The caller's function as a way to the parts.
class CalledPasses : public MCHost::IPartPasses {
 public:
  CalledPasses(predselect_part_pass pass, void* userData) : fPass(pass), fpUserData(userData) {}

  std::string Pass(MCHost::PassOver over, const std::string& request) override {
    predselect_piece answer;
    const int failed =
        fPass(fpUserData, static_cast<std::int32_t>(over), request.data(), request.size(), &answer);
    if (failed == 0) return std::move(answer.fBytes);
    throw MCHost::HostIOError("the parts", "",
                              answer.fBytes.empty() ? "a pass over them failed" : answer.fBytes);
  }

 private:
  predselect_part_pass fPass;
  void* fpUserData;
};

predselect_piece* NewPiece(std::string bytes) {
  auto piece = std::make_unique<predselect_piece>();
  piece->fBytes = std::move(bytes);
  return piece.release();
}

// Runs what makes pieces; a job that was stopped makes none.
template <class Body>
predselect_status MakePieces(predselect_session* session, Body body) {
  return Guarded(session, [&] {
    try {
      body();
      return PREDSELECT_OK;
    } catch (const PredSelect::Cancelled&) {
      session->fError = "the job was cancelled";
      session->fpError = session->fError.c_str();
      return PREDSELECT_CANCELLED;
    }
  });
}

}  // namespace

}  // namespace PredSelectC

using namespace PredSelectC;

predselect_status predselect_piece_bytes(predselect_session* session, const predselect_piece* piece,
                                         predselect_bytes* bytes) {
  return Guarded(session, [&] {
    const std::string& held = Given(piece, "piece").fBytes;
    Given(bytes, "bytes") = {held.data(), held.size()};
  });
}

predselect_status predselect_piece_set(predselect_piece* piece, const void* data, size_t size) {
  if (piece == nullptr || (data == nullptr && size > 0)) return PREDSELECT_MISUSE;
  try {
    piece->fBytes.assign(static_cast<const char*>(data), size);
    return PREDSELECT_OK;
  } catch (const std::exception&) {
    return PREDSELECT_NO_MEMORY;
  }
}

void predselect_piece_close(predselect_piece* piece) { delete piece; }

predselect_status predselect_part_ranges(predselect_session* session, predselect_table* table,
                                         int64_t part, predselect_piece** ranges) {
  Clear(ranges);
  return MakePieces(session, [&] {
    predselect_piece*& out = Given(ranges, "ranges");
    if (part < 0 || part >= TableRanges::kMostParts) throw Misuse("part is no number of a part");
    const TableRanges found =
        PredSelect::FindRanges(*Given(table, "table").fpTable, part, session->fSurroundings);
    out = NewPiece(Piece{Piece::kRanges, 0, StateBytes::Of(found)}.Bytes());
  });
}

predselect_status predselect_pieces_merge(predselect_session* session,
                                          const predselect_bytes* pieces, size_t n_pieces,
                                          predselect_piece** merged) {
  Clear(merged);
  return Guarded(session, [&] {
    predselect_piece*& out = Given(merged, "merged");
    if (n_pieces == 0) throw Misuse("there is no piece to merge");
    std::vector<PredSelect::NamedPiece> named;
    for (size_t i = 0; i < n_pieces; ++i) {
      named.push_back(
          {BytesArgument(&Given(pieces, "pieces") + i, "pieces"), "piece " + std::to_string(i)});
    }
    out = NewPiece(PredSelect::MergePieces(named));
  });
}

predselect_status predselect_table_open_parts(predselect_session* session,
                                              const predselect_bytes* ranges, const char* name,
                                              predselect_part_pass pass, void* user_data,
                                              predselect_table** table) {
  Clear(table);
  return Guarded(session, [&] {
    predselect_table*& out = Given(table, "table");
    if (pass == nullptr) throw Misuse("pass is NULL");
    const std::shared_ptr<MCHost::WholeTable> whole =
        PredSelect::WholeOf(BytesArgument(ranges, "ranges"), -1);
    whole->fpPasses = std::make_shared<CalledPasses>(pass, user_data);
    auto made = std::make_unique<predselect_table>();
    made->fName = TextArgument(name, "name", "data");
    whole->fName = made->fName;
    made->fpTable = std::make_shared<MCHost::PartsTable>(whole);
    out = made.release();
  });
}

predselect_status predselect_part_answer(predselect_session* session, predselect_table* table,
                                         const predselect_bytes* request, predselect_piece** answer,
                                         predselect_piece** codes) {
  Clear(answer);
  Clear(codes);
  return MakePieces(session, [&] {
    predselect_piece*& out = Given(answer, "answer");
    PredSelect::PartAnswer made = PredSelect::AnswerPart(
        *Given(table, "table").fpTable, std::string(BytesArgument(request, "request")),
        session->fSurroundings);
    std::unique_ptr<predselect_piece> kept;
    if (!made.fCodes.empty()) {
      Given(codes, "codes");
      kept.reset(NewPiece(std::move(made.fCodes)));
    }
    out = NewPiece(std::move(made.fAnswer));
    if (kept != nullptr) *codes = kept.release();
  });
}

predselect_status predselect_codes_answer(predselect_session* session,
                                          const predselect_bytes* codes,
                                          const predselect_bytes* request,
                                          predselect_piece** answer) {
  Clear(answer);
  return MakePieces(session, [&] {
    predselect_piece*& out = Given(answer, "answer");
    out = NewPiece(PredSelect::AnswerFromCodes(BytesArgument(codes, "codes"),
                                               std::string(BytesArgument(request, "request")),
                                               session->fSurroundings));
  });
}
