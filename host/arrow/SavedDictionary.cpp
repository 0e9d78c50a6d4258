#include "host/arrow/SavedDictionary.h"

#include <arrow/array.h>
#include <arrow/array/builder_primitive.h>
#include <arrow/buffer.h>
#include <arrow/util/bit_util.h>

#include <vector>

namespace MCHost {

namespace {

using ArrayResult = arrow::Result<std::shared_ptr<arrow::Array>>;

const arrow::DictionaryArray& AsDictionary(const std::shared_ptr<arrow::Array>& column) {
  return static_cast<const arrow::DictionaryArray&>(*column);
}

}  // namespace

ArrayResult WithoutNullEntries(const std::shared_ptr<arrow::Array>& column) {
  const arrow::DictionaryArray& codes = AsDictionary(column);
  const std::shared_ptr<arrow::Array>& values = codes.dictionary();
  if (values->null_count() == 0) return column;
  ARROW_ASSIGN_OR_RAISE(auto valid, arrow::AllocateEmptyBitmap(codes.length() + codes.offset()));
  std::int64_t nNull = 0;
  for (std::int64_t i = 0; i < codes.length(); ++i) {
    const bool isThere = codes.IsValid(i) && values->IsValid(codes.GetValueIndex(i));
    arrow::bit_util::SetBitTo(valid->mutable_data(), codes.offset() + i, isThere);
    nNull += isThere ? 0 : 1;
  }
  const auto cells = codes.data()->Copy();
  cells->buffers[0] = std::move(valid);
  cells->null_count = nNull;
  // The entries stay, so that the codes do; nothing points to those that were null.
  const auto entries = values->data()->Copy();
  entries->buffers[0] = nullptr;
  entries->null_count = 0;
  cells->dictionary = entries;
  return arrow::MakeArray(cells);
}

ArrayResult SavedDictionary::Take(const std::shared_ptr<arrow::Array>& column) {
  const arrow::DictionaryArray& given = AsDictionary(column);
  if (fpValues == nullptr) fpValues = given.dictionary();
  if (given.dictionary()->Equals(*fpValues)) {
    return std::make_shared<arrow::DictionaryArray>(column->type(), given.indices(), fpValues);
  }
  if (fpValues->null_count() > 0) return nullptr;
  ARROW_ASSIGN_OR_RAISE(const auto cells, WithoutNullEntries(column));
  const arrow::DictionaryArray& codes = AsDictionary(cells);
  ARROW_ASSIGN_OR_RAISE(const auto all, arrow::DictionaryUnifier::Make(fpValues->type()));
  std::shared_ptr<arrow::Buffer> places;
  std::shared_ptr<arrow::Array> values;
  ARROW_RETURN_NOT_OK(all->Unify(*fpValues));
  ARROW_RETURN_NOT_OK(all->Unify(*codes.dictionary(), &places));
  const arrow::Status fits = all->GetResultWithIndexType(codes.indices()->type(), &values);
  if (fits.IsInvalid()) return nullptr;
  ARROW_RETURN_NOT_OK(fits);
  if (!values->Slice(0, fpValues->length())->Equals(*fpValues)) return nullptr;
  fpValues = values;
  return codes.Transpose(column->type(), values,
                         reinterpret_cast<const std::int32_t*>(places->data()));
}

}  // namespace MCHost
