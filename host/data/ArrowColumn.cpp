#include "host/data/ArrowColumn.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <limits>
#include <utility>

#include "common/MissingValue.h"
#include "host/data/StringPool.h"
#include "host/session/HostIOError.h"
#include "host/text/Utf8.h"

namespace MCHost {

namespace {

constexpr double kExactIntegers = 9007199254740992.0;  // 2^53, to which 2^53 + 1 is rounded
constexpr std::int32_t kUnknownCode = -2;
constexpr int kMostPlaces = 300;  // of decimals, either way

// Reads n numbers from raw index `at` of a data buffer, each divided by `divisor`.
using NumberReader = void (*)(const void* data, std::int64_t at, std::size_t n, double divisor,
                              double* values);

template <class T>
void ReadPlain(const void* data, std::int64_t at, std::size_t n, double divisor, double* values) {
  const T* cells = static_cast<const T*>(data) + at;
  if (divisor == 1.0) {
    for (std::size_t i = 0; i < n; ++i) values[i] = static_cast<double>(cells[i]);
  } else {
    for (std::size_t i = 0; i < n; ++i) values[i] = static_cast<double>(cells[i]) / divisor;
  }
}

void ReadBits(const void* data, std::int64_t at, std::size_t n, double, double* values) {
  const auto* bits = static_cast<const std::uint8_t*>(data);
  for (std::size_t i = 0; i < n; ++i) {
    const std::int64_t bit = at + static_cast<std::int64_t>(i);
    values[i] = bits[bit >> 3] >> (bit & 7) & 1;
  }
}

// IEEE 754 binary16: 1 sign, 5 exponent and 10 fraction bits.
double HalfToDouble(std::uint16_t half) {
  const int exponent = half >> 10 & 31;
  const double fraction = half & 1023;
  double value = 0.0;
  if (exponent == 0) {
    value = std::ldexp(fraction, -24);
  } else if (exponent == 31) {
    value = fraction == 0.0 ? std::numeric_limits<double>::infinity()
                            : std::numeric_limits<double>::quiet_NaN();
  } else {
    value = std::ldexp(fraction + 1024.0, exponent - 25);
  }
  return (half & 0x8000) != 0 ? -value : value;
}

void ReadHalves(const void* data, std::int64_t at, std::size_t n, double, double* values) {
  const auto* cells = static_cast<const std::uint16_t*>(data) + at;
  for (std::size_t i = 0; i < n; ++i) values[i] = HalfToDouble(cells[i]);
}

template <class T>
std::int64_t ReadIndex(const void* data, std::int64_t at) {
  return static_cast<std::int64_t>(static_cast<const T*>(data)[at]);
}
using IndexReader = std::int64_t (*)(const void* data, std::int64_t at);

// A string cell; a view without data where the cell breaks the rules.
using StringReader = std::string_view (*)(const ArrowArray& array, std::int64_t at);

constexpr std::string_view kBrokenString{};

template <class Offset>
std::string_view ReadString(const ArrowArray& array, std::int64_t at) {
  const auto* offsets = static_cast<const Offset*>(array.buffers[1]);
  const Offset end = offsets[array.offset + array.length];
  offsets += at;
  if (offsets[0] < 0 || offsets[1] < offsets[0] || offsets[1] > end) return kBrokenString;
  const auto size = static_cast<std::size_t>(offsets[1] - offsets[0]);
  if (size == 0) return "";
  if (array.buffers[2] == nullptr) return kBrokenString;
  return {static_cast<const char*>(array.buffers[2]) + offsets[0], size};
}

// A view is 16 bytes: the size, then the text itself up to 12 bytes, else 4 bytes of it, the number
// of a data buffer and the position in it. Before the data buffers stand validity and views, behind
// them their sizes.
std::string_view ReadView(const ArrowArray& array, std::int64_t at) {
  constexpr std::int32_t kInline = 12;
  const char* view = static_cast<const char*>(array.buffers[1]) + at * 16;
  std::array<std::int32_t, 4> words;
  std::memcpy(words.data(), view, sizeof(words));
  if (words[0] < 0) return kBrokenString;
  const auto size = static_cast<std::size_t>(words[0]);
  if (words[0] <= kInline) return {view + 4, size};
  if (words[2] < 0 || words[2] >= array.n_buffers - 3 || words[3] < 0) return kBrokenString;
  const char* data = static_cast<const char*>(array.buffers[2 + words[2]]);
  const auto* sizes = static_cast<const std::int64_t*>(array.buffers[array.n_buffers - 1]);
  const bool isThere =
      data != nullptr && sizes != nullptr && words[3] <= sizes[words[2]] - words[0];
  return isThere ? std::string_view(data + words[3], size) : kBrokenString;
}

// Stored units in one of ours: of a second by the letter that times and timestamps carry, of a day
// for dates in milliseconds. 0 for a unit that there is not.
double UnitsOf(const std::string& format) {
  if (format == "tdm") return 86400e3;
  if (format[0] != 't' || format == "tdD") return 1.0;
  switch (format.size() < 3 ? '\0' : format[2]) {
    case 's':
      return 1.0;
    case 'm':
      return 1e3;
    case 'u':
      return 1e6;
    case 'n':
      return 1e9;
    default:
      return 0.0;
  }
}

// "d:precision,scale" or "d:precision,scale,bits"; no bits for anything else.
struct Decimal {
  int fScale = 0;
  int fBits = 128;
};

Decimal ParseDecimal(const char* format) {
  Decimal decimal;
  int precision = 0;
  const int nRead = std::sscanf(format, "d:%d,%d,%d", &precision, &decimal.fScale, &decimal.fBits);
  if (nRead < 2) decimal.fBits = 0;
  return decimal;
}

// The text under a key of a column's metadata, empty for none. They are laid out as a count and
// that many pairs, each text with its length before it; null means none at all.
std::string MetadataText(const char* metadata, std::string_view key) {
  if (metadata == nullptr) return {};
  const auto readCount = [&metadata] {
    std::int32_t count = 0;
    std::memcpy(&count, metadata, sizeof(count));
    metadata += sizeof(count);
    return std::max(count, 0);
  };
  const auto readText = [&] {
    const auto size = static_cast<std::size_t>(readCount());
    const std::string_view text(metadata, size);
    metadata += size;
    return text;
  };
  for (std::int32_t pairs = readCount(); pairs > 0; --pairs) {
    const std::string_view name = readText();
    const std::string_view text = readText();
    if (name == key) return std::string(text);
  }
  return {};
}

}  // namespace

// What is known of an Arrow type, found by the start of its format string.
struct ArrowColumn::Type {
  enum Match { kWhole, kStart };

  const char* fFormat;
  Match fMatch;
  std::int64_t fBuffers;      // the least that an array must have
  NumberReader fReadNumbers;  // null for strings, decimals and the null type
  StringReader fReadString;   // null for numbers
  IndexReader fReadIndex;     // null where the type cannot index a dictionary
  const char* fName;          // what messages call it
  const char* fNote;          // how values change, or null
  bool fbRefused = false;
};

constexpr char kDateNote[] = "holds dates, read as days since 1970-01-01";
constexpr char kTimestampNote[] = "holds dates with times, read as seconds since 1970-01-01 00:00";
constexpr char kTimeNote[] = "holds times, read as seconds";

// clang-format off
const ArrowColumn::Type ArrowColumn::kTypes[] = {
    {"n",    Type::kWhole, 0, nullptr, nullptr, nullptr, "null", nullptr},
    {"b",    Type::kWhole, 2, ReadBits, nullptr, nullptr, "boolean", nullptr},
    {"c",    Type::kWhole, 2, ReadPlain<std::int8_t>, nullptr, ReadIndex<std::int8_t>, "integer", nullptr},
    {"C",    Type::kWhole, 2, ReadPlain<std::uint8_t>, nullptr, ReadIndex<std::uint8_t>, "integer", nullptr},
    {"s",    Type::kWhole, 2, ReadPlain<std::int16_t>, nullptr, ReadIndex<std::int16_t>, "integer", nullptr},
    {"S",    Type::kWhole, 2, ReadPlain<std::uint16_t>, nullptr, ReadIndex<std::uint16_t>, "integer", nullptr},
    {"i",    Type::kWhole, 2, ReadPlain<std::int32_t>, nullptr, ReadIndex<std::int32_t>, "integer", nullptr},
    {"I",    Type::kWhole, 2, ReadPlain<std::uint32_t>, nullptr, ReadIndex<std::uint32_t>, "integer", nullptr},
    {"l",    Type::kWhole, 2, ReadPlain<std::int64_t>, nullptr, ReadIndex<std::int64_t>, "64-bit integer", nullptr},
    {"L",    Type::kWhole, 2, ReadPlain<std::uint64_t>, nullptr, ReadIndex<std::uint64_t>, "64-bit integer", nullptr},
    {"e",    Type::kWhole, 2, ReadHalves, nullptr, nullptr, "half float", nullptr},
    {"f",    Type::kWhole, 2, ReadPlain<float>, nullptr, nullptr, "float", nullptr},
    {"g",    Type::kWhole, 2, ReadPlain<double>, nullptr, nullptr, "double", nullptr},
    {"tdD",  Type::kWhole, 2, ReadPlain<std::int32_t>, nullptr, nullptr, "date", kDateNote},
    {"tdm",  Type::kWhole, 2, ReadPlain<std::int64_t>, nullptr, nullptr, "date", kDateNote},
    {"tts",  Type::kWhole, 2, ReadPlain<std::int32_t>, nullptr, nullptr, "time", kTimeNote},
    {"ttm",  Type::kWhole, 2, ReadPlain<std::int32_t>, nullptr, nullptr, "time", kTimeNote},
    {"tt",   Type::kStart, 2, ReadPlain<std::int64_t>, nullptr, nullptr, "time", kTimeNote},
    {"ts",   Type::kStart, 2, ReadPlain<std::int64_t>, nullptr, nullptr, "timestamp", kTimestampNote},
    {"tD",   Type::kStart, 2, ReadPlain<std::int64_t>, nullptr, nullptr, "duration", kTimeNote},
    {"d:",   Type::kStart, 2, nullptr, nullptr, nullptr, "decimal", nullptr},
    {"u",    Type::kWhole, 3, nullptr, ReadString<std::int32_t>, nullptr, "string", nullptr},
    {"U",    Type::kWhole, 3, nullptr, ReadString<std::int64_t>, nullptr, "string", nullptr},
    {"vu",   Type::kWhole, 3, nullptr, ReadView, nullptr, "string", nullptr},
    {"+l",   Type::kStart, 0, nullptr, nullptr, nullptr, "list", nullptr, true},
    {"+L",   Type::kStart, 0, nullptr, nullptr, nullptr, "list", nullptr, true},
    {"+v",   Type::kStart, 0, nullptr, nullptr, nullptr, "list", nullptr, true},
    {"+w",   Type::kStart, 0, nullptr, nullptr, nullptr, "list", nullptr, true},
    {"+s",   Type::kStart, 0, nullptr, nullptr, nullptr, "struct", nullptr, true},
    {"+m",   Type::kStart, 0, nullptr, nullptr, nullptr, "map", nullptr, true},
    {"+u",   Type::kStart, 0, nullptr, nullptr, nullptr, "union", nullptr, true},
    {"+r",   Type::kStart, 0, nullptr, nullptr, nullptr, "run-end encoded", nullptr, true},
    {"ti",   Type::kStart, 0, nullptr, nullptr, nullptr, "interval", nullptr, true},
    {"",     Type::kStart, 0, nullptr, nullptr, nullptr, "binary", nullptr, true},
};
// clang-format on

const ArrowColumn::Type& ArrowColumn::FindType(const char* format) {
  const std::string_view text(format);
  for (const Type& type : kTypes) {
    const std::string_view known(type.fFormat);
    if (type.fMatch == Type::kWhole ? text == known : text.substr(0, known.size()) == known) {
      return type;
    }
  }
  return *std::rbegin(kTypes);
}

ArrowColumn::ArrowColumn(const ArrowSchema& schema, const std::string& source)
    : fName(schema.name != nullptr ? schema.name : ""),
      fLabel(MetadataText(schema.metadata, "label")),
      fSource(source) {
  const std::string format = schema.format != nullptr ? schema.format : "";
  fpType = &FindType(format.c_str());
  if (fpType->fbRefused) {
    Refuse(std::string("columns of type ") + fpType->fName + " cannot be used");
  }
  fReadNumbers = fpType->fReadNumbers;
  fDivisor = UnitsOf(format);
  if (format.compare(0, 2, "d:") == 0) {
    const Decimal decimal = ParseDecimal(format.c_str());
    fReadDecimals = DecimalReaderOf(decimal.fBits);
    fPlaces = decimal.fScale;
    if (fReadDecimals == nullptr) Refuse("decimals of this size cannot be used");
  }
  if (fDivisor <= 0.0 || std::abs(fPlaces) > kMostPlaces) {
    Refuse(std::string("a ") + fpType->fName + " of this unit or scale cannot be used");
  }
  if (schema.dictionary == nullptr) return;
  if (fpType->fReadIndex == nullptr) Refuse("the dictionary's index is not an integer");
  ArrowSchema values = *schema.dictionary;
  values.name = schema.name;
  fpDictionary = std::make_unique<ArrowColumn>(values, source);
  if (fpDictionary->fpDictionary != nullptr) Refuse("a dictionary of dictionaries cannot be used");
}

ArrowColumn::ArrowColumn(ArrowColumn&&) noexcept = default;
ArrowColumn::~ArrowColumn() = default;

bool ArrowColumn::IsNumeric() const {
  return fpDictionary != nullptr ? fpDictionary->IsNumeric() : fpType->fReadString == nullptr;
}

KOVA_Variable::Time ArrowColumn::Time() const {
  constexpr std::pair<std::string_view, KOVA_Variable::Time> kTimes[] = {
      {"date", KOVA_Variable::kDate},
      {"timestamp", KOVA_Variable::kDateTime},
      {"time", KOVA_Variable::kTimeOfDay},
      {"duration", KOVA_Variable::kDuration}};
  if (fpDictionary != nullptr) return fpDictionary->Time();
  for (const auto& [name, time] : kTimes) {
    if (fpType->fName == name) return time;
  }
  return KOVA_Variable::kNoTime;
}

std::string ArrowColumn::Note() const {
  if (fpDictionary != nullptr) return fpDictionary->Note();
  if (fpType->fNote != nullptr) return fpType->fNote;
  return fbDigitsLost ? "holds whole numbers beyond 2^53, whose last digits are lost" : "";
}

void ArrowColumn::Attach(const ArrowArray& array, std::int64_t first, std::int64_t length) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  const bool sound = array.length >= 0 && length <= array.length - first && array.offset >= 0 &&
                     array.offset <= kMost - array.length && array.null_count >= -1 &&
                     array.n_buffers >= fpType->fBuffers &&
                     (array.buffers != nullptr || fpType->fBuffers == 0);
  if (!sound) Refuse("the column's data do not match its type");
  fpArray = &array;
  fFirst = array.offset + first;
  if (fpType->fBuffers == 0) return;
  fpValid = array.null_count == 0 ? nullptr : static_cast<const std::uint8_t*>(array.buffers[0]);
  if (array.null_count > 0 && fpValid == nullptr) Refuse("the column's null marks are not there");
  if (length > 0 && array.buffers[1] == nullptr) Refuse("the column's values are not there");
  if (fpDictionary == nullptr) return;
  if (array.dictionary == nullptr) Refuse("the column's dictionary is not there");
  const ArrowArray& dictionary = *array.dictionary;
  fpDictionary->Attach(dictionary, 0, dictionary.length);
  const auto size = static_cast<std::size_t>(dictionary.length);
  if (IsNumeric()) {
    fDictionaryNumbers.resize(size);
    fpDictionary->ReadNumbers(0, size, fDictionaryNumbers.data());
  } else {
    fDictionaryCodes.assign(size, kUnknownCode);
  }
}

void ArrowColumn::ReadNumbers(std::int64_t first, std::size_t n, double* values) {
  const std::int64_t at = fFirst + first;
  if (fpDictionary != nullptr) return ReadDictionaryNumbers(at, n, values);
  if (fReadNumbers == nullptr && fReadDecimals == nullptr) {
    std::fill_n(values, n, KOVA_SystemMissing);
    return;
  }
  if (fReadDecimals != nullptr) {
    fReadDecimals(fpArray->buffers[1], at, n, fPlaces, values);
  } else {
    fReadNumbers(fpArray->buffers[1], at, n, fDivisor, values);
  }
  MarkMissing(at, n, values);
}

void ArrowColumn::MarkMissing(std::int64_t at, std::size_t n, double* values) {
  if (fpValid != nullptr) {
    for (std::size_t i = 0; i < n; ++i) {
      if (IsNull(at + static_cast<std::int64_t>(i))) values[i] = KOVA_SystemMissing;
    }
  }
  for (std::size_t i = 0; i < n; ++i) {
    values[i] = MCMV::IsMissing(values[i]) ? KOVA_SystemMissing : values[i];
  }
  const bool wide = fReadNumbers == ReadPlain<std::int64_t> ||
                    fReadNumbers == ReadPlain<std::uint64_t> ||
                    (fReadDecimals != nullptr && fPlaces == 0);
  if (!wide || fpType->fNote != nullptr || fDivisor != 1.0 || fbDigitsLost) return;
  fbDigitsLost = std::any_of(values, values + n, [](double value) {
    return std::abs(value) >= kExactIntegers && value != KOVA_SystemMissing;
  });
}

void ArrowColumn::ReadDictionaryNumbers(std::int64_t at, std::size_t n, double* values) {
  for (std::size_t i = 0; i < n; ++i) {
    const std::int64_t cell = at + static_cast<std::int64_t>(i);
    values[i] = IsNull(cell)
                    ? KOVA_SystemMissing
                    : fDictionaryNumbers[static_cast<std::size_t>(DictionaryIndexAt(cell))];
  }
}

void ArrowColumn::ReadCodes(std::int64_t first, std::size_t n, StringPool& pool,
                            std::int32_t* codes) {
  const std::int64_t at = fFirst + first;
  for (std::size_t i = 0; i < n; ++i) codes[i] = CodeAt(at + static_cast<std::int64_t>(i), pool);
}

std::int32_t ArrowColumn::CodeAt(std::int64_t at, StringPool& pool) {
  if (IsNull(at)) return -1;
  if (fpDictionary == nullptr) return Intern(StringAt(at), pool);
  const std::int64_t index = DictionaryIndexAt(at);
  std::int32_t& code = fDictionaryCodes[static_cast<std::size_t>(index)];
  if (code == kUnknownCode) code = fpDictionary->CodeAt(fpDictionary->fFirst + index, pool);
  return code;
}

std::int32_t ArrowColumn::Intern(std::string_view text, StringPool& pool) const {
  const std::int32_t known = pool.Size();
  const std::int32_t code = pool.Code(text);
  if (code == known && !IsUtf8(text)) Refuse("a string is not valid UTF-8");
  return code;
}

bool ArrowColumn::IsNull(std::int64_t at) const {
  return fpValid != nullptr && (fpValid[at >> 3] >> (at & 7) & 1) == 0;
}

std::string_view ArrowColumn::StringAt(std::int64_t at) const {
  const std::string_view text = fpType->fReadString(*fpArray, at);
  if (text.data() == nullptr) Refuse("a string lies outside the column's data");
  return text;
}

std::int64_t ArrowColumn::DictionaryIndexAt(std::int64_t at) const {
  const std::int64_t index = fpType->fReadIndex(fpArray->buffers[1], at);
  if (index < 0 || index >= fpDictionary->fpArray->length) {
    Refuse("a cell points outside the column's dictionary");
  }
  return index;
}

void ArrowColumn::Refuse(const std::string& reason) const {
  throw HostIOError(fSource, "column \"" + fName + "\"", reason);
}

}  // namespace MCHost
