#include "host/arrow/CsvTexts.h"

#include <arrow/array.h>
#include <arrow/array/builder_binary.h>
#include <arrow/array/builder_primitive.h>
#include <arrow/array/builder_time.h>
#include <arrow/array/util.h>
#include <arrow/type.h>
#include <arrow/util/value_parsing.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "host/arrow/CsvKinds.h"

namespace MCHost {

namespace {

// The same texts with some of them null.
arrow::Result<std::shared_ptr<arrow::Array>> WithNulls(const arrow::StringArray& texts,
                                                       const std::vector<std::string>& nulls) {
  arrow::StringBuilder builder;
  ARROW_RETURN_NOT_OK(builder.Reserve(texts.length()));
  for (std::int64_t i = 0; i < texts.length(); ++i) {
    const std::string_view text = texts.GetView(i);
    const bool isNull =
        texts.IsNull(i) || std::find(nulls.begin(), nulls.end(), text) != nulls.end();
    ARROW_RETURN_NOT_OK(isNull ? builder.AppendNull() : builder.Append(text));
  }
  return builder.Finish();
}

// What a text of a type must be among others.
unsigned KindOf(const arrow::DataType& type) {
  switch (type.id()) {
    case arrow::Type::BOOL:
      return kCsvBoolean;
    case arrow::Type::DATE32:
      return kCsvDate;
    case arrow::Type::TIMESTAMP: {
      const auto& moment = static_cast<const arrow::TimestampType&>(type);
      const bool isNano = moment.unit() == arrow::TimeUnit::NANO;
      if (moment.timezone().empty()) return isNano ? kCsvNanoDateTime : kCsvDateTime;
      return isNano ? kCsvNanoZonedTime : kCsvZonedTime;
    }
    case arrow::Type::TIME64:
      return static_cast<const arrow::Time64Type&>(type).unit() == arrow::TimeUnit::NANO
                 ? kCsvNanoTime
                 : kCsvTime;
    default:
      return kCsvText;
  }
}

arrow::Status CheckKinds(const arrow::Array& texts, unsigned kind) {
  const auto& cells = static_cast<const arrow::StringArray&>(texts);
  for (std::int64_t i = 0; i < cells.length(); ++i) {
    if (cells.IsValid(i) && (CsvKindsOf(cells.GetView(i)) & kind) == 0) {
      return arrow::Status::Invalid("\"", cells.GetView(i), "\" is of another kind");
    }
  }
  return arrow::Status::OK();
}

std::string_view WithoutBlanks(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
  return text;
}

template <class Type>
arrow::Result<std::shared_ptr<arrow::Array>> ParsedAs(
    const arrow::StringArray& texts, const std::shared_ptr<arrow::DataType>& type) {
  typename arrow::TypeTraits<Type>::BuilderType builder(type, arrow::default_memory_pool());
  ARROW_RETURN_NOT_OK(builder.Reserve(texts.length()));
  for (std::int64_t i = 0; i < texts.length(); ++i) {
    typename arrow::internal::StringConverter<Type>::value_type value{};
    std::string_view text = texts.GetView(i);
    if constexpr (arrow::is_integer_type<Type>::value) text = WithoutBlanks(text);
    if (texts.IsNull(i)) {
      builder.UnsafeAppendNull();
    } else if (arrow::internal::ParseValue(static_cast<const Type&>(*type), text.data(),
                                           text.size(), &value)) {
      builder.UnsafeAppend(value);
    } else {
      return arrow::Status::Invalid("\"", text, "\" is of another kind");
    }
  }
  return builder.Finish();
}

arrow::Result<std::shared_ptr<arrow::Array>> Parsed(const arrow::Array& texts,
                                                    const std::shared_ptr<arrow::DataType>& type) {
  const auto& cells = static_cast<const arrow::StringArray&>(texts);
  switch (type->id()) {
    case arrow::Type::BOOL:
      return ParsedAs<arrow::BooleanType>(cells, type);
    case arrow::Type::DATE32:
      return ParsedAs<arrow::Date32Type>(cells, type);
    case arrow::Type::TIMESTAMP:
      return ParsedAs<arrow::TimestampType>(cells, type);
    case arrow::Type::TIME64:
      return ParsedAs<arrow::Time64Type>(cells, type);
    case arrow::Type::INT64:
      return ParsedAs<arrow::Int64Type>(cells, type);
    default:
      return arrow::MakeArrayOfNull(type, texts.length());  // nothing but nulls
  }
}

class TurnedBatches final : public arrow::RecordBatchReader {
 public:
  TurnedBatches(std::shared_ptr<arrow::RecordBatchReader> batches, CsvTexts texts,
                std::shared_ptr<arrow::Schema> schema)
      : fpBatches(std::move(batches)), fTexts(std::move(texts)), fpSchema(std::move(schema)) {}

  std::shared_ptr<arrow::Schema> schema() const override { return fpSchema; }
  arrow::Status ReadNext(std::shared_ptr<arrow::RecordBatch>* batch) override {
    ARROW_RETURN_NOT_OK(fpBatches->ReadNext(batch));
    if (*batch == nullptr) return arrow::Status::OK();
    return fTexts.Turn(std::move(*batch)).Value(batch);
  }

 private:
  std::shared_ptr<arrow::RecordBatchReader> fpBatches;
  CsvTexts fTexts;
  std::shared_ptr<arrow::Schema> fpSchema;
};

}  // namespace

arrow::Result<std::shared_ptr<arrow::RecordBatch>> CsvTexts::Turn(
    std::shared_ptr<arrow::RecordBatch> batch) const {
  for (const Column& column : fColumns) {
    ARROW_ASSIGN_OR_RAISE(auto turned, TurnColumn(column, *batch->column(column.fPlace)));
    const auto field = batch->schema()->field(column.fPlace)->WithType(column.fpType);
    ARROW_ASSIGN_OR_RAISE(batch, batch->SetColumn(column.fPlace, field, turned));
  }
  return batch;
}

std::shared_ptr<arrow::RecordBatchReader> CsvTexts::Turn(
    std::shared_ptr<arrow::RecordBatchReader> batches) const {
  if (fColumns.empty()) return batches;
  auto schema = TurnedSchema(*batches->schema());
  return std::make_shared<TurnedBatches>(std::move(batches), *this, std::move(schema));
}

std::shared_ptr<arrow::Schema> CsvTexts::TurnedSchema(const arrow::Schema& schema) const {
  arrow::FieldVector fields = schema.fields();
  for (const Column& column : fColumns) {
    auto& field = fields[static_cast<std::size_t>(column.fPlace)];
    field = field->WithType(column.fpType);
  }
  return arrow::schema(std::move(fields));
}

arrow::Result<std::shared_ptr<arrow::Array>> CsvTexts::TurnColumn(const Column& column,
                                                                  const arrow::Array& texts) const {
  auto cells = arrow::MakeArray(texts.data());
  if (!column.fNulls.empty()) {
    ARROW_ASSIGN_OR_RAISE(cells,
                          WithNulls(static_cast<const arrow::StringArray&>(texts), column.fNulls));
  }
  switch (column.fpType->id()) {
    case arrow::Type::STRING:
      return cells;
    case arrow::Type::DOUBLE:
      return Numbers(*cells);
    default:
      if (!fbChecked) ARROW_RETURN_NOT_OK(CheckKinds(*cells, KindOf(*column.fpType)));
      return Parsed(*cells, column.fpType);
  }
}

arrow::Result<std::shared_ptr<arrow::Array>> CsvTexts::Numbers(const arrow::Array& texts) const {
  const auto& cells = static_cast<const arrow::StringArray&>(texts);
  arrow::DoubleBuilder builder;
  ARROW_RETURN_NOT_OK(builder.Reserve(cells.length()));
  for (std::int64_t i = 0; i < cells.length(); ++i) {
    if (cells.IsNull(i)) {
      builder.UnsafeAppendNull();
      continue;
    }
    const std::string_view text = cells.GetView(i);
    const auto number =
        text.size() <= kCsvLongestOther ? PlainNumberOf(text, fNumbers) : std::nullopt;
    double value = 0.0;
    if (!number ||
        !arrow::internal::StringToFloat(number->fText.data(), number->fText.size(), '.', &value)) {
      return arrow::Status::Invalid("\"", text, "\" is no number");
    }
    builder.UnsafeAppend(value);
  }
  return builder.Finish();
}

}  // namespace MCHost
