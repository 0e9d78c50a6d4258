#include "host/arrow/CellBuilder.h"

#include <arrow/array/builder_binary.h>
#include <arrow/array/builder_primitive.h>
#include <arrow/array/builder_time.h>
#include <arrow/util/value_parsing.h>

#include <cstdint>

namespace MCHost {

namespace {

arrow::Status NoValue(std::string_view text, const arrow::DataType& type) {
  return arrow::Status::Invalid("\"", text, "\" is no ", type.ToString());
}

std::string_view WithoutBlanks(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

template <class Type>
arrow::Status AppendParsed(arrow::ArrayBuilder& builder, std::string_view text) {
  const auto& type = static_cast<const Type&>(*builder.type());
  const std::string_view bare = WithoutBlanks(text);
  typename Type::c_type value{};
  if (!arrow::internal::ParseValue(type, bare.data(), bare.size(), &value)) {
    return NoValue(text, type);
  }
  return static_cast<typename arrow::TypeTraits<Type>::BuilderType&>(builder).Append(value);
}

// With a zone or without one.
arrow::Status AppendTimestamp(arrow::ArrayBuilder& builder, std::string_view text) {
  const auto& type = static_cast<const arrow::TimestampType&>(*builder.type());
  std::int64_t value = 0;
  bool zone = false;
  if (!arrow::internal::ParseTimestampISO8601(text.data(), text.size(), type.unit(), &value,
                                              &zone)) {
    return NoValue(text, type);
  }
  return static_cast<arrow::TimestampBuilder&>(builder).Append(value);
}

arrow::Status AppendText(arrow::ArrayBuilder& builder, std::string_view text) {
  return static_cast<arrow::StringBuilder&>(builder).Append(text);
}

arrow::Status AppendNothing(arrow::ArrayBuilder& builder, std::string_view) {
  return builder.AppendNull();
}

auto AppenderOf(arrow::Type::type type) {
  switch (type) {
    case arrow::Type::DOUBLE:
      return AppendParsed<arrow::DoubleType>;
    case arrow::Type::INT64:
      return AppendParsed<arrow::Int64Type>;
    case arrow::Type::BOOL:
      return AppendParsed<arrow::BooleanType>;
    case arrow::Type::DATE32:
      return AppendParsed<arrow::Date32Type>;
    case arrow::Type::TIME64:
      return AppendParsed<arrow::Time64Type>;
    case arrow::Type::TIMESTAMP:
      return AppendTimestamp;
    case arrow::Type::NA:
      return AppendNothing;
    default:
      return AppendText;
  }
}

}  // namespace

CellBuilder::CellBuilder(const std::shared_ptr<arrow::DataType>& type)
    : fpBuilder(arrow::MakeBuilder(type).ValueOrDie()), fpAppend(AppenderOf(type->id())) {}

}  // namespace MCHost
