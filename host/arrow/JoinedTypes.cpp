#include "host/arrow/JoinedTypes.h"

#include <arrow/array.h>
#include <arrow/array/builder_binary.h>
#include <arrow/array/util.h>
#include <arrow/compute/cast.h>
#include <arrow/record_batch.h>
#include <arrow/scalar.h>
#include <arrow/type.h>
#include <arrow/type_traits.h>

#include <algorithm>

#include "host/arrow/CsvCells.h"
#include "host/data/MissingValueCode.h"

namespace MCHost {

namespace {

using Type = std::shared_ptr<arrow::DataType>;
using Unit = arrow::TimeUnit::type;

// What types have in common that can stand in one column.
enum class Family { kNothing, kNumbers, kTexts, kDates, kClocks, kDurations, kOthers };

bool IsDictionary(const arrow::DataType& type) { return type.id() == arrow::Type::DICTIONARY; }

Family FamilyOf(const arrow::DataType& type) {
  const arrow::Type::type id = type.id();
  if (IsDictionary(type)) {
    return FamilyOf(*static_cast<const arrow::DictionaryType&>(type).value_type());
  }
  if (id == arrow::Type::NA) return Family::kNothing;
  if (id == arrow::Type::BOOL || arrow::is_numeric(id) || arrow::is_decimal(id)) {
    return Family::kNumbers;
  }
  if (arrow::is_string(id) || id == arrow::Type::STRING_VIEW) return Family::kTexts;
  if (arrow::is_date(id) || id == arrow::Type::TIMESTAMP) return Family::kDates;
  if (arrow::is_time(id)) return Family::kClocks;
  return id == arrow::Type::DURATION ? Family::kDurations : Family::kOthers;
}

bool IsWhole(arrow::Type::type id) { return id == arrow::Type::BOOL || arrow::is_integer(id); }

Type CommonWhole(const arrow::DataType& a, const arrow::DataType& b) {
  const auto isSigned = [](const arrow::DataType& type) {
    return arrow::is_signed_integer(type.id());
  };
  const bool isLong = a.id() == arrow::Type::UINT64 || b.id() == arrow::Type::UINT64;
  if (!isLong) return arrow::int64();
  if (isSigned(a) || isSigned(b)) return arrow::decimal128(20, 0);
  return arrow::uint64();
}

struct Digits {
  int fBeforePoint;
  int fBehindPoint;
};

Digits DigitsOf(const arrow::DataType& type) {
  constexpr int kMostOfWhole = 20;
  if (!arrow::is_decimal(type.id())) return {kMostOfWhole, 0};
  const auto& decimal = static_cast<const arrow::DecimalType&>(type);
  return {decimal.precision() - decimal.scale(), decimal.scale()};
}

// Of two of which one is a decimal; the other one may be a whole number.
Type CommonDecimal(const arrow::DataType& a, const arrow::DataType& b) {
  const Digits left = DigitsOf(a);
  const Digits right = DigitsOf(b);
  const int scale = std::max(left.fBehindPoint, right.fBehindPoint);
  const int precision = std::max(left.fBeforePoint, right.fBeforePoint) + scale;
  if (precision > arrow::Decimal256Type::kMaxPrecision) return arrow::float64();
  if (precision > arrow::Decimal128Type::kMaxPrecision) return arrow::decimal256(precision, scale);
  return arrow::decimal128(precision, scale);
}

Type CommonNumber(const arrow::DataType& a, const arrow::DataType& b) {
  const auto isExact = [](const arrow::DataType& type) {
    return arrow::is_integer(type.id()) || arrow::is_decimal(type.id());
  };
  if (IsWhole(a.id()) && IsWhole(b.id())) return CommonWhole(a, b);
  return isExact(a) && isExact(b) ? CommonDecimal(a, b) : arrow::float64();
}

template <class TypeWithUnit>
Unit UnitOf(const arrow::DataType& type) {
  return static_cast<const TypeWithUnit&>(type).unit();
}

// The finer one of two units for a use.
Unit Finer(Unit a, Unit b, JoinFor use) {
  return std::min(std::max(a, b),
                  use == JoinFor::kReading ? arrow::TimeUnit::MICRO : arrow::TimeUnit::NANO);
}

Unit UnitOfDate(const arrow::DataType& type) {
  if (type.id() == arrow::Type::TIMESTAMP) return UnitOf<arrow::TimestampType>(type);
  return type.id() == arrow::Type::DATE64 ? arrow::TimeUnit::MILLI : arrow::TimeUnit::SECOND;
}

Type CommonDate(const arrow::DataType& a, const arrow::DataType& b, JoinFor use) {
  if (arrow::is_date(a.id()) && arrow::is_date(b.id())) return arrow::date64();
  const auto zone = [](const arrow::DataType& type) {
    return arrow::is_date(type.id()) ? std::string()
                                     : static_cast<const arrow::TimestampType&>(type).timezone();
  };
  const std::string left = zone(a);
  const std::string right = zone(b);
  const bool areInstants = !left.empty() && !right.empty();
  return arrow::timestamp(Finer(UnitOfDate(a), UnitOfDate(b), use),
                          left == right ? left : (areInstants ? "UTC" : ""));
}

Type CommonClock(const arrow::DataType& a, const arrow::DataType& b) {
  const Unit unit = Finer(UnitOf<arrow::TimeType>(a), UnitOf<arrow::TimeType>(b), JoinFor::kSaving);
  return unit < arrow::TimeUnit::MICRO ? arrow::time32(unit) : arrow::time64(unit);
}

using ArrayResult = arrow::Result<std::shared_ptr<arrow::Array>>;

// As they would be saved as text.
ArrayResult TextsOf(const std::shared_ptr<arrow::Array>& cells) {
  CsvCells texts(0, "");
  texts.Format(*arrow::RecordBatch::Make(arrow::schema({arrow::field("", cells->type())}),
                                         cells->length(), {cells}));
  arrow::LargeStringBuilder builder;
  for (std::int64_t i = 0; i < cells->length(); ++i) {
    const std::string_view text = texts.Cell(i, 0);  // empty for a null alone
    ARROW_RETURN_NOT_OK(text.empty() ? builder.AppendNull() : builder.Append(text));
  }
  return builder.Finish();
}

}  // namespace

Type ValueTypeOf(const Type& type) {
  if (!IsDictionary(*type)) return type;
  return static_cast<const arrow::DictionaryType&>(*type).value_type();
}

bool AreTexts(const arrow::DataType& type) { return FamilyOf(type) == Family::kTexts; }

std::string WhatIsIn(const arrow::DataType& type) {
  switch (FamilyOf(type)) {
    case Family::kNothing:
      return "nothing";
    case Family::kNumbers:
      return "numbers";
    case Family::kTexts:
      return "texts";
    case Family::kDates:
      return "dates or times";
    case Family::kClocks:
      return "times of day";
    case Family::kDurations:
      return "durations";
    case Family::kOthers:
      break;
  }
  return "values of type " + type.ToString();
}

Type CommonType(const Type& a, const Type& b, JoinFor use) {
  if (a->Equals(*b)) return a;
  const Family family = FamilyOf(*a);
  const Family other = FamilyOf(*b);
  if (family == Family::kNothing) return b;
  if (other == Family::kNothing) return a;
  if (family == Family::kOthers || other == Family::kOthers) return nullptr;
  const bool areTexts = family == Family::kTexts || other == Family::kTexts;
  if (areTexts && (family == other || use == JoinFor::kSaving)) return arrow::large_utf8();
  if (family != other) return nullptr;
  const Type left = ValueTypeOf(a);
  const Type right = ValueTypeOf(b);
  if (left->Equals(*right)) return left;
  if (family == Family::kNumbers) return CommonNumber(*left, *right);
  if (family == Family::kDates) return CommonDate(*left, *right, use);
  if (family == Family::kClocks) return CommonClock(*left, *right);
  return arrow::duration(
      Finer(UnitOf<arrow::DurationType>(*left), UnitOf<arrow::DurationType>(*right), use));
}

ArrayResult CellsAs(const std::shared_ptr<arrow::Array>& cells, const Type& type) {
  if (cells->type()->Equals(*type)) return cells;
  if (cells->type_id() == arrow::Type::NA) return arrow::MakeArrayOfNull(type, cells->length());
  if (AreTexts(*type) && !AreTexts(*cells->type())) return TextsOf(cells);
  auto options = arrow::compute::CastOptions::Unsafe();
  options.allow_time_overflow = false;
  if (IsDictionary(*cells->type())) {
    ARROW_ASSIGN_OR_RAISE(const auto plain,
                          arrow::compute::Cast(cells, ValueTypeOf(cells->type()), options));
    return CellsAs(plain.make_array(), type);
  }
  ARROW_ASSIGN_OR_RAISE(const auto cast, arrow::compute::Cast(cells, type, options));
  return cast.make_array();
}

std::optional<std::shared_ptr<arrow::Scalar>> TextAs(const std::string& text, const Type& type) {
  const auto read = [&]() -> arrow::Result<std::shared_ptr<arrow::Scalar>> {
    ARROW_ASSIGN_OR_RAISE(const auto cell,
                          arrow::MakeArrayFromScalar(arrow::StringScalar(text), 1));
    ARROW_ASSIGN_OR_RAISE(const auto cast, arrow::compute::Cast(cell, type));
    return cast.make_array()->GetScalar(0);
  };
  const auto scalar = read();
  if (scalar.ok()) return *scalar;
  // A text without a zone says an instant as the files' own cells do.
  if (type->id() != arrow::Type::TIMESTAMP) return std::nullopt;
  const auto& moments = static_cast<const arrow::TimestampType&>(*type);
  if (moments.timezone().empty()) return std::nullopt;
  const auto plain = TextAs(text, arrow::timestamp(moments.unit()));
  if (!plain) return std::nullopt;
  const auto& found = static_cast<const arrow::TimestampScalar&>(**plain);
  return std::make_shared<arrow::TimestampScalar>(found.value, type);
}

Type TypeWithText(const Type& type, const std::string& text) {
  const Type plain = ValueTypeOf(type);
  if (TextAs(text, plain) || FamilyOf(*plain) != Family::kNumbers || !CodeAsNumber(text)) {
    return plain;
  }
  const Type wider = CommonType(plain, arrow::int64(), JoinFor::kReading);
  return TextAs(text, wider) ? wider : arrow::float64();
}

}  // namespace MCHost
