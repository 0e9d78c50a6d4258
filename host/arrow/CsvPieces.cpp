#include "host/arrow/CsvPieces.h"

#include <arrow/array.h>
#include <arrow/buffer.h>
#include <arrow/csv/reader.h>
#include <arrow/io/memory.h>
#include <arrow/table.h>
#include <arrow/util/thread_pool.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

namespace MCHost {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kLineEnds = "\r\n";
// A line of more pieces than these is not looked for the end of.
constexpr std::size_t kMostPieces = 16;

arrow::Status NotAsPromised() {
  return arrow::Status::Invalid("the data are not what their start promises");
}

// Beyond what a double holds exactly, digits may be lost, and only the text tells.
bool HasLargeNumber(const double* values, std::int64_t n) {
  constexpr double kExactIntegers = 9007199254740992.0;  // 2^53
  bool isLarge = false;
  for (std::int64_t i = 0; i < n; ++i) {
    const double size = std::abs(values[i]);
    isLarge |= (size >= kExactIntegers) & (size <= std::numeric_limits<double>::max());
  }
  return isLarge;
}

bool HasFraction(const arrow::DoubleArray& numbers) {
  for (std::int64_t i = 0; i < numbers.length(); ++i) {
    if (numbers.IsValid(i) && numbers.Value(i) != std::floor(numbers.Value(i))) return true;
  }
  return false;
}

}  // namespace

CsvPieces::CsvPieces(std::shared_ptr<arrow::io::InputStream> input,
                     std::shared_ptr<arrow::Schema> schema, CsvPieceRules rules)
    : fpInput(std::move(input)), fpSchema(std::move(schema)), fRules(std::move(rules)) {}

CsvPieces::~CsvPieces() {
  for (const auto& batch : fAhead) batch.Wait();
}

arrow::Status CsvPieces::ReadNext(Batch* batch) {
  batch->reset();
  const auto most = static_cast<std::size_t>(arrow::GetCpuThreadPoolCapacity()) + 1;
  do {
    while (!fbEnded && fAhead.size() < most) {
      ARROW_ASSIGN_OR_RAISE(std::string piece, NextPiece());
      ARROW_ASSIGN_OR_RAISE(auto parsed, arrow::internal::GetCpuThreadPool()->Submit(
                                             [this, piece = std::move(piece)]() mutable {
                                               return Parse(std::move(piece));
                                             }));
      fAhead.push_back(std::move(parsed));
    }
    if (fAhead.empty()) return arrow::Status::OK();
    const arrow::Future<Batch> first = std::move(fAhead.front());
    fAhead.pop_front();
    ARROW_ASSIGN_OR_RAISE(*batch, first.result());
  } while (*batch == nullptr);
  return arrow::Status::OK();
}

arrow::Result<std::string> CsvPieces::NextPiece() {
  std::string piece = std::move(fRest);
  fRest.clear();
  std::size_t end = std::string::npos;
  while (end == std::string::npos) {
    const std::size_t had = piece.size();
    if (had > kMostPieces * fRules.fPieceBytes) return NotAsPromised();
    piece.resize(had + fRules.fPieceBytes);
    ARROW_ASSIGN_OR_RAISE(
        const std::int64_t n,
        fpInput->Read(static_cast<std::int64_t>(fRules.fPieceBytes), &piece[had]));
    piece.resize(had + static_cast<std::size_t>(n));
    fbEnded = n == 0;
    if (fbEnded) break;
    end = piece.rfind('\n');
  }
  if (!fbEnded) {
    fRest = piece.substr(end + 1);
    piece.resize(end + 1);
  }
  if (!fbStarted) ARROW_RETURN_NOT_OK(SkipHeader(piece));
  return piece;
}

arrow::Status CsvPieces::SkipHeader(std::string& piece) {
  fbStarted = true;
  const std::size_t mark = piece.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
  if (!fRules.fbHeader) {
    piece.erase(0, mark);
    return arrow::Status::OK();
  }
  const std::size_t start = std::min(piece.find_first_not_of(kLineEnds, mark), piece.size());
  const std::size_t end = std::min(piece.find_first_of(kLineEnds, start), piece.size());
  const std::string_view header = std::string_view(piece).substr(start, end - start);
  if (!IsPlainCsvPiece(header, fRules.fLook)) return NotAsPromised();
  piece.erase(0, end);
  return arrow::Status::OK();
}

arrow::Result<CsvPieces::Batch> CsvPieces::Parse(std::string piece) const {
  if (piece.find_first_not_of(kLineEnds) == std::string::npos) return nullptr;
  // A mark that is not the file's first bytes is text, but would not be taken for it.
  if (piece.starts_with(kByteOrderMark)) return NotAsPromised();
  if (!IsPlainCsvPiece(piece, fRules.fLook)) return NotAsPromised();
  auto read = arrow::csv::ReadOptions::Defaults();
  read.use_threads = false;
  read.block_size = static_cast<std::int32_t>(piece.size());
  read.column_names = fRules.fNames;
  // Arrow may hold the bytes beyond the reader's end.
  const auto bytes =
      std::make_shared<arrow::io::BufferReader>(arrow::Buffer::FromString(std::move(piece)));
  ARROW_ASSIGN_OR_RAISE(const auto reader,
                        arrow::csv::TableReader::Make(arrow::io::default_io_context(), bytes, read,
                                                      fRules.fParse, fRules.fConvert));
  ARROW_ASSIGN_OR_RAISE(const auto table, reader->Read());
  ARROW_ASSIGN_OR_RAISE(Batch texts, table->CombineChunksToBatch());
  ARROW_ASSIGN_OR_RAISE(Batch batch, fRules.fTexts.Turn(std::move(texts)));
  ARROW_RETURN_NOT_OK(CheckNumbers(*batch));
  return batch;
}

arrow::Status CsvPieces::CheckNumbers(const arrow::RecordBatch& batch) const {
  for (int j = 0; j < batch.num_columns(); ++j) {
    if (batch.column(j)->type_id() != arrow::Type::DOUBLE) continue;
    const auto& numbers = static_cast<const arrow::DoubleArray&>(*batch.column(j));
    if (HasLargeNumber(numbers.raw_values(), numbers.length())) return NotAsPromised();
    if (fRules.fWhole[static_cast<std::size_t>(j)] && HasFraction(numbers)) return NotAsPromised();
  }
  return arrow::Status::OK();
}

}  // namespace MCHost
