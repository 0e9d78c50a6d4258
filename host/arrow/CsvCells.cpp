#include "host/arrow/CsvCells.h"

#include <arrow/array.h>
#include <arrow/extension_type.h>
#include <arrow/record_batch.h>
#include <arrow/type.h>
#include <arrow/util/decimal.h>
#include <arrow/util/float16.h>
#include <arrow/visit_type_inline.h>

#include <array>
#include <cstdlib>
#include <type_traits>
#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/session/HostIOError.h"
#include "host/text/CsvText.h"
#include "host/text/DateText.h"

namespace MCHost {

namespace {

constexpr std::int64_t kSecondsADay = 86400;

// The digits of a decimal with its point put in, and zeros where digits are missing on either side.
void AppendDecimal(std::string& text, std::string digits, std::int32_t scale) {
  if (digits.front() == '-') {
    text += '-';
    digits.erase(0, 1);
  }
  const auto places = static_cast<std::size_t>(std::abs(scale));
  if (scale < 0 && digits != "0") digits.append(places, '0');
  if (scale > 0 && digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
  if (scale > 0) digits.insert(digits.size() - places, 1, '.');
  text += digits;
}

std::int64_t UnitsASecond(arrow::TimeUnit::type unit) {
  constexpr std::array<std::int64_t, 4> kUnits = {1, 1000, 1000000, 1000000000};
  return kUnits[static_cast<std::size_t>(unit)];
}

// Appends the cell at a place of an array, whatever the array's type is.
template <class Cell>
class CellWriter {
 public:
  // `forEach` is handed a function of a place and calls it for each cell that is there.
  CellWriter(const arrow::Array& values, std::string& text, char delimiter, Cell& forEach)
      : fValues(values), fText(text), fDelimiter(delimiter), fForEach(forEach) {}

  arrow::Status Visit(const arrow::NullType&) {
    return Write([](std::int64_t) {});
  }
  arrow::Status Visit(const arrow::BooleanType&) {
    const auto& array = As<arrow::BooleanType>();
    return Write([&](std::int64_t at) { fText += array.Value(at) ? "true" : "false"; });
  }
  arrow::Status Visit(const arrow::HalfFloatType&) {
    const auto& array = As<arrow::HalfFloatType>();
    return Write([&](std::int64_t at) {
      AppendNumber(fText, arrow::util::Float16::FromBits(array.Value(at)).ToFloat());
    });
  }
  template <class T>
  std::enable_if_t<arrow::is_number_type<T>::value, arrow::Status> Visit(const T&) {
    const auto& array = As<T>();
    return Write([&](std::int64_t at) { AppendNumber(fText, array.Value(at)); });
  }
  template <class T>
  std::enable_if_t<arrow::is_decimal_type<T>::value, arrow::Status> Visit(const T& type) {
    using Value = typename arrow::TypeTraits<T>::CType;
    const auto& array = As<T>();
    return Write([&, scale = type.scale()](std::int64_t at) {
      AppendDecimal(fText, Value(array.GetValue(at)).ToIntegerString(), scale);
    });
  }
  arrow::Status Visit(const arrow::Date32Type&) {
    const auto& array = As<arrow::Date32Type>();
    return Write([&](std::int64_t at) { AppendDate(fText, array.Value(at)); });
  }
  arrow::Status Visit(const arrow::Date64Type&) {
    constexpr std::int64_t kMillisADay = kSecondsADay * 1000;
    const auto& array = As<arrow::Date64Type>();
    return Write([&](std::int64_t at) {
      const std::int64_t time = array.Value(at);
      if (time % kMillisADay != 0) return AppendDateTime(fText, time, 1000);
      AppendDate(fText, time / kMillisADay);
    });
  }
  arrow::Status Visit(const arrow::TimestampType& type) {
    const auto& array = As<arrow::TimestampType>();
    return Write([&, units = UnitsASecond(type.unit())](std::int64_t at) {
      AppendDateTime(fText, array.Value(at), units);
      if (!type.timezone().empty()) fText += 'Z';
    });
  }
  template <class T>
  std::enable_if_t<arrow::is_time_type<T>::value, arrow::Status> Visit(const T& type) {
    const auto& array = As<T>();
    return Write([&, units = UnitsASecond(type.unit())](std::int64_t at) {
      AppendTime(fText, array.Value(at), units);
    });
  }
  arrow::Status Visit(const arrow::DurationType& type) {
    const auto& array = As<arrow::DurationType>();
    return Write([&, units = UnitsASecond(type.unit())](std::int64_t at) {
      AppendSeconds(fText, array.Value(at), units);
    });
  }
  template <class T>
  std::enable_if_t<arrow::is_string_type<T>::value || std::is_same_v<T, arrow::StringViewType> ||
                       std::is_same_v<T, arrow::LargeStringType>,
                   arrow::Status>
  Visit(const T&) {
    const auto& array = As<T>();
    return Write([&](std::int64_t at) {
      const std::string_view value = array.GetView(at);
      if (fDelimiter == 0) {
        fText += value;
      } else {
        AppendCsvText(fText, value, fDelimiter);
      }
    });
  }
  arrow::Status Visit(const arrow::DataType& type) {
    return arrow::Status::NotImplemented("cells of type ", type.ToString(),
                                         " cannot be written as text");
  }

 private:
  template <class T>
  const auto& As() const {
    return static_cast<const typename arrow::TypeTraits<T>::ArrayType&>(fValues);
  }

  template <class Append>
  arrow::Status Write(Append append) {
    fForEach(append);
    return arrow::Status::OK();
  }

  const arrow::Array& fValues;
  std::string& fText;
  char fDelimiter;
  Cell& fForEach;
};

const arrow::Array& StorageOf(const arrow::Array& array) {
  if (array.type_id() != arrow::Type::EXTENSION) return array;
  return *static_cast<const arrow::ExtensionArray&>(array).storage();
}

}  // namespace

void CsvCells::Format(const arrow::RecordBatch& batch) {
  fColumns.resize(static_cast<std::size_t>(batch.num_columns()));
  for (int j = 0; j < batch.num_columns(); ++j) {
    FormatColumn(*batch.column(j), batch.column_name(j), fColumns[static_cast<std::size_t>(j)]);
  }
}

void CsvCells::FormatColumn(const arrow::Array& array, const std::string& name,
                            Column& column) const {
  column.fText.clear();
  column.fEnds.clear();
  const arrow::Array& cells = StorageOf(array);
  const auto* codes = cells.type_id() == arrow::Type::DICTIONARY
                          ? static_cast<const arrow::DictionaryArray*>(&cells)
                          : nullptr;
  const arrow::Array& values = codes != nullptr ? StorageOf(*codes->dictionary()) : cells;
  const auto forEach = [&](auto append) {
    for (std::int64_t i = 0; i < cells.length(); ++i) {
      if (!cells.IsNull(i)) {
        const std::int64_t at = codes != nullptr ? codes->GetValueIndex(i) : i;
        if (codes == nullptr || !values.IsNull(at)) append(at);
      }
      column.fEnds.push_back(column.fText.size());
    }
  };
  CellWriter writer(values, column.fText, fDelimiter, forEach);
  const arrow::Status status = arrow::VisitTypeInline(*values.type(), &writer);
  if (!status.ok()) throw HostIOError(fTarget, "column \"" + name + "\"", status.message());
}

std::string_view CsvCells::Cell(std::int64_t at, std::size_t j) const {
  const Column& column = fColumns[j];
  const auto i = static_cast<std::size_t>(at);
  const std::size_t from = i > 0 ? column.fEnds[i - 1] : 0;
  return std::string_view(column.fText).substr(from, column.fEnds[i] - from);
}

void CsvCells::AppendCase(std::int64_t at, std::string& row) const {
  for (std::size_t j = 0; j < fColumns.size(); ++j) {
    if (j > 0) row += fDelimiter;
    row += Cell(at, j);
  }
}

}  // namespace MCHost
