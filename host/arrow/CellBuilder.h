// Cells as texts into an Arrow array of the type that their column was found to be.
#pragma once

#include <arrow/array/builder_base.h>
#include <arrow/type_fwd.h>

#include <memory>
#include <string_view>

namespace MCHost {

class CellBuilder {
 public:
  // REQUIRES: a type that CsvTypeOf() gives, or 64-bit integers.
  explicit CellBuilder(const std::shared_ptr<arrow::DataType>& type);

  // A failure where the text is not one of the type.
  arrow::Status Append(std::string_view text) { return fpAppend(*fpBuilder, text); }
  arrow::Status AppendNull() { return fpBuilder->AppendNull(); }
  // The cells so far; the next ones begin a new array.
  arrow::Result<std::shared_ptr<arrow::Array>> Finish() { return fpBuilder->Finish(); }

 private:
  std::unique_ptr<arrow::ArrayBuilder> fpBuilder;
  arrow::Status (*fpAppend)(arrow::ArrayBuilder& builder, std::string_view text);
};

}  // namespace MCHost
