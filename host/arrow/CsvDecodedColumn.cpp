#include "host/arrow/CsvDecodedColumn.h"

#include <arrow/array/data.h>
#include <arrow/type.h>

#include <cstring>
#include <utility>

namespace MCHost {

namespace {

arrow::Result<std::shared_ptr<arrow::Buffer>> BufferOf(std::size_t bytes) {
  return arrow::AllocateBuffer(static_cast<std::int64_t>(bytes));
}

std::uint64_t HashOf(std::string_view text) {
  constexpr std::size_t kPart = sizeof(std::uint64_t);
  constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15;
  std::uint64_t part = 0;
  std::memcpy(&part, text.data(), kPart);
  if (text.size() < kPart) part &= (std::uint64_t{1} << (8 * text.size())) - 1;
  std::uint64_t hash = (part ^ text.size()) * kOdd;
  if (text.size() > kPart) {
    std::memcpy(&part, text.data() + text.size() - kPart, kPart);
    hash = (hash ^ part) * kOdd;
  }
  return hash;
}

}  // namespace

arrow::Result<CsvDecodedColumn> CsvDecodedColumn::Make(std::shared_ptr<arrow::DataType> type,
                                                       std::size_t most) {
  CsvDecodedColumn column;
  column.fMost = most;
  const arrow::Type::type id = type->id();
  if (id == arrow::Type::DOUBLE) {
    ARROW_ASSIGN_OR_RAISE(column.fpCells, BufferOf(most * sizeof(double)));
    column.fpNumbers = reinterpret_cast<double*>(column.fpCells->mutable_data());
  } else if (id == arrow::Type::DICTIONARY) {
    ARROW_ASSIGN_OR_RAISE(column.fpCells, BufferOf(most * sizeof(std::int32_t)));
    column.fpCodes = reinterpret_cast<std::int32_t*>(column.fpCells->mutable_data());
    column.fSlots.assign(kSlots, -1);
  }
  column.fpType = std::move(type);
  return column;
}

void CsvDecodedColumn::AddText(std::string_view text) {
  fTexts += text;
  fEnds.push_back(static_cast<std::int32_t>(fTexts.size()));
}

std::int32_t CsvDecodedColumn::CodeOf(std::string_view text) {
  std::int32_t& code = fSlots[HashOf(text) % kSlots];
  if (code >= 0) {
    const auto at = static_cast<std::size_t>(code);
    const auto start = static_cast<std::size_t>(fEnds[at]);
    const auto size = static_cast<std::size_t>(fEnds[at + 1]) - start;
    if (text == std::string_view(fTexts).substr(start, size)) return code;
  }
  code = static_cast<std::int32_t>(fEnds.size()) - 1;
  AddText(text);
  return code;
}

arrow::Status CsvDecodedColumn::SetNull(std::size_t row) {
  if (fpValid == nullptr) {
    const std::size_t bytes = (fMost + 7) / 8;
    ARROW_ASSIGN_OR_RAISE(fpValid, BufferOf(bytes));
    std::memset(fpValid->mutable_data(), 0xFF, bytes);
  }
  fpValid->mutable_data()[row / 8] &= static_cast<std::uint8_t>(~(1U << row % 8));
  ++fnNulls;
  if (fpNumbers != nullptr) {
    fpNumbers[row] = 0.0;
  } else if (fpCodes != nullptr) {
    fpCodes[row] = 0;
  } else {
    fEnds.push_back(fEnds.back());
  }
  return arrow::Status::OK();
}

arrow::Result<std::shared_ptr<arrow::ArrayData>> CsvDecodedColumn::Finish(std::size_t rows) {
  const auto length = static_cast<std::int64_t>(rows);
  const auto nulls = static_cast<std::int64_t>(fnNulls);
  if (fpType->id() == arrow::Type::NA) {
    return arrow::ArrayData::Make(fpType, length, {nullptr}, length);
  }
  if (fpNumbers != nullptr) {
    return arrow::ArrayData::Make(fpType, length, {fpValid, fpCells}, nulls);
  }
  const auto count = static_cast<std::int64_t>(fEnds.size()) - 1;
  std::vector<std::shared_ptr<arrow::Buffer>> texts{nullptr,
                                                    arrow::Buffer::FromVector(std::move(fEnds)),
                                                    arrow::Buffer::FromString(std::move(fTexts))};
  if (fpCodes == nullptr) {
    texts[0] = fpValid;
    return arrow::ArrayData::Make(fpType, length, std::move(texts), nulls);
  }
  auto words = arrow::ArrayData::Make(
      static_cast<const arrow::DictionaryType&>(*fpType).value_type(), count, std::move(texts), 0);
  return arrow::ArrayData::Make(fpType, length, {fpValid, fpCells}, {}, std::move(words), nulls);
}

}  // namespace MCHost
