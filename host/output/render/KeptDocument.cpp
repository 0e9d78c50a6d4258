#include "host/output/render/KeptDocument.h"

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <nlohmann/json.hpp>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "host/output/OutputDocument.h"
#include "host/output/ShowText.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

// Count it up when the fields below change.
constexpr std::string_view kStart = "PredSelectResult/1\n";
// Texts within texts, and what they stand in: no document is nested deeper.
constexpr int kDeepest = 12;

using CellValue = decltype(OutputCell::fValue);

template <class T, class Wanted>
concept Is = std::same_as<std::remove_const_t<T>, Wanted>;

template <class T>
concept Plain = std::is_arithmetic_v<T> || std::is_enum_v<T>;

template <class E>
constexpr int kLast = 0;
template <>
constexpr int kLast<OutputText::Kind> = OutputText::kValue;
template <>
constexpr int kLast<OutputDimension::Axis> = OutputDimension::kLayer;
template <>
constexpr int kLast<OutputFormat> = static_cast<int>(kLastOutputFormat);

// The fields of each class, once for writing and for reading. The names in brackets are all that it
// has: one that is new does not compile until it stands here too.
template <class Archive, Is<OutputText> T>
void Fields(Archive& archive, T& text) {
  auto& [kind, key, label, arguments, items] = text;
  archive(kind, key, label, arguments, items);
}
template <class Archive, Is<OutputCategory> T>
void Fields(Archive& archive, T& category) {
  auto& [label, parent, isGroup, format, notes] = category;
  archive(label, parent, isGroup, format, notes);
}
template <class Archive, Is<OutputDimension> T>
void Fields(Archive& archive, T& dimension) {
  auto& [name, axis, showName, categories] = dimension;
  archive(name, axis, showName, categories);
}
template <class Archive, Is<OutputCell> T>
void Fields(Archive& archive, T& cell) {
  auto& [place, value, format, notes] = cell;
  archive(place, value, format, notes);
}
template <class Archive, Is<OutputTable> T>
void Fields(Archive& archive, T& table) {
  auto& [title, subtype, caption, dimensions, cells, footnotes, width, isFlat, forPrograms] = table;
  archive(title, subtype, caption, dimensions, cells, footnotes, width, isFlat, forPrograms);
}
template <class Archive, Is<OutputMessage> T>
void Fields(Archive& archive, T& message) {
  auto& [level, text, detail] = message;
  archive(level, text, detail);
}
template <class Archive, Is<OutputNote> T>
void Fields(Archive& archive, T& note) {
  auto& [kind, group, title, text] = note;
  archive(kind, group, title, text);
}
template <class Archive, Is<OutputChart> T>
void Fields(Archive& archive, T& chart) {
  auto& [title, vegaLite] = chart;
  archive(title, vegaLite);
}
template <class Archive, Is<OutputVariable> T>
void Fields(Archive& archive, T& variable) {
  auto& [name, label, type, format] = variable;
  archive(name, label, type, format);
}
template <class Archive, Is<OutputRun> T>
void Fields(Archive& archive, T& run) {
  auto& [command, completed, messages, notes, tables, charts, macros, variables, files, findings] =
      run;
  archive(command, completed, messages, notes, tables, charts, macros, variables, files, findings);
}
template <class Archive, Is<OutputFailure> T>
void Fields(Archive& archive, T& failure) {
  auto& [exitCode, text, file, place] = failure;
  archive(exitCode, text, file, place);
}
template <class Archive, Is<OutputDocument> T>
void Fields(Archive& archive, T& document) {
  archive(document.fVersion, document.fDataSource, document.fNCases, document.fNVariables,
          document.fReadingNotes, document.fFailure, document.fbFindings);
}

class Writer {
 public:
  template <class... T>
  void operator()(const T&... fields) {
    (Put(fields), ...);
  }

  std::string fBytes = std::string(kStart);

 private:
  template <Plain T>
  void Put(T value) {
    fBytes.append(reinterpret_cast<const char*>(&value), sizeof value);
  }
  void Put(const std::string& text) {
    Put(text.size());
    fBytes += text;
  }
  template <class T>
  void Put(const std::vector<T>& list) {
    Put(list.size());
    for (const T& item : list) Put(item);
  }
  template <class T>
  void Put(const std::optional<T>& held) {
    Put(held.has_value());
    if (held) Put(*held);
  }
  template <class A, class B>
  void Put(const std::pair<A, B>& both) {
    Put(both.first);
    Put(both.second);
  }
  void Put(const CellValue& value) {
    Put(value.index());
    if (const auto* number = std::get_if<double>(&value)) Put(*number);
    if (const auto* text = std::get_if<OutputText>(&value)) Put(*text);
  }
  template <class T>
  requires(!Plain<T>) void Put(const T& object) { Fields(*this, object); }
};

[[noreturn]] void Refuse() {
  throw HostIOError(KeyText("a result"), "",
                    KeyText("the bytes are damaged, or of another version"));
}

class Reader {
 public:
  explicit Reader(std::string_view bytes) : fLeft(bytes) {}

  template <class... T>
  void operator()(T&... fields) {
    (Get(fields), ...);
  }

  bool IsAtEnd() const { return fLeft.empty(); }

 private:
  std::string_view Take(std::size_t n) {
    if (n > fLeft.size()) Refuse();
    const std::string_view taken = fLeft.substr(0, n);
    fLeft.remove_prefix(n);
    return taken;
  }
  template <Plain T>
  void Get(T& value) {
    if constexpr (std::is_enum_v<T>) {
      int number = 0;
      static_assert(sizeof(T) == sizeof number);
      Get(number);
      if (number < 0 || number > kLast<T>) Refuse();
      value = static_cast<T>(number);
    } else if constexpr (std::same_as<T, bool>) {
      value = Take(1).front() != 0;
    } else {
      std::memcpy(&value, Take(sizeof value).data(), sizeof value);
    }
  }
  void Get(std::string& text) {
    std::size_t size = 0;
    Get(size);
    text = Take(size);
  }
  template <class T>
  void Get(std::vector<T>& list) {
    std::size_t size = 0;
    Get(size);
    if (size > fLeft.size()) Refuse();  // an item has a byte at least
    while (list.size() < size) Get(list.emplace_back());
  }
  template <class T>
  void Get(std::optional<T>& held) {
    bool isThere = false;
    Get(isThere);
    if (isThere) Get(held.emplace());
  }
  template <class A, class B>
  void Get(std::pair<A, B>& both) {
    Get(both.first);
    Get(both.second);
  }
  void Get(CellValue& value) {
    std::size_t index = 0;
    Get(index);
    if (index >= std::variant_size_v<CellValue>) Refuse();
    if (index == 1) Get(value.emplace<double>());
    if (index == 2) Get(value.emplace<OutputText>());
  }
  template <class T>
  requires(!Plain<T>) void Get(T& object) {
    if (++fDepth > kDeepest) Refuse();
    Fields(*this, object);
    --fDepth;
  }

  std::string_view fLeft;
  int fDepth = 0;
};

// Of the bytes (FNV-1a).
std::uint64_t Checksum(std::string_view bytes) {
  std::uint64_t sum = 14695981039346656037U;
  for (const char c : bytes) sum = (sum ^ static_cast<unsigned char>(c)) * 1099511628211U;
  return sum;
}

template <class T>
bool AreWithin(const std::vector<int>& places, const std::vector<T>& list) {
  return std::ranges::all_of(places, [&list](int place) {
    return place >= 0 && static_cast<std::size_t>(place) < list.size();
  });
}

bool IsWhole(const OutputTable& table, const OutputDimension& dimension) {
  int place = 0;
  return std::ranges::all_of(dimension.fCategories, [&](const OutputCategory& category) {
    return category.fParent >= -1 && category.fParent < place++ &&
           AreWithin(category.fNotes, table.fFootnotes);
  });
}

// Whether everything that the renderers look up by its place is there.
bool IsWhole(const OutputTable& table) {
  for (const OutputDimension& dimension : table.fDimensions) {
    if (!IsWhole(table, dimension)) return false;
  }
  for (const OutputCell& cell : table.fCells) {
    if (cell.fPlace.size() != table.fDimensions.size()) return false;
    for (std::size_t i = 0; i < cell.fPlace.size(); ++i) {
      if (!AreWithin({cell.fPlace[i]}, table.fDimensions[i].fCategories)) return false;
    }
    if (!AreWithin(cell.fNotes, table.fFootnotes)) return false;
  }
  return true;
}

bool IsWhole(const OutputRun& run) {
  using nlohmann::json;
  return std::ranges::all_of(run.fTables, [](const auto& table) { return IsWhole(table); }) &&
         std::ranges::all_of(run.fCharts,
                             [](const auto& chart) { return json::accept(chart.fVegaLite); }) &&
         (run.fFindings.empty() || json::accept(run.fFindings));
}

}  // namespace

std::string KeepDocument(const OutputDocument& document) {
  Writer writer;
  writer(document, document.GetRuns());
  writer(Checksum(writer.fBytes));
  return std::move(writer.fBytes);
}

OutputDocument ReadKeptDocument(std::string_view bytes) {
  std::uint64_t sum = 0;
  if (!bytes.starts_with(kStart) || bytes.size() < kStart.size() + sizeof sum) Refuse();
  Reader behind(bytes.substr(bytes.size() - sizeof sum));
  behind(sum);
  bytes.remove_suffix(sizeof sum);
  if (sum != Checksum(bytes)) Refuse();
  OutputDocument document;
  std::vector<OutputRun> runs;
  Reader reader(bytes.substr(kStart.size()));
  reader(document, runs);
  const bool areWhole = std::ranges::all_of(runs, [](const auto& run) { return IsWhole(run); });
  if (!reader.IsAtEnd() || !areWhole) Refuse();
  for (OutputRun& run : runs) document.BeginRun(run.fCommand) = std::move(run);
  return document;
}

}  // namespace MCHost
