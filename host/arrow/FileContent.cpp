#include "host/arrow/FileContent.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "host/arrow/SheetSource.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t kStart = 16;
constexpr std::string_view kParquet = "PAR1"sv;  // at both ends
constexpr std::string_view kArrow = "ARROW1\0\0"sv;
constexpr std::string_view kZip = "PK\x03\x04"sv;
constexpr std::string_view kSqlite = "SQLite format 3\0"sv;
constexpr std::string_view kDuckDb = "DUCK"sv;
constexpr std::size_t kDuckDbPlace = 8;

std::optional<FileFormat> FormatOf(std::string_view start, std::string_view end) {
  if (start.starts_with(kParquet) && end.ends_with(kParquet)) return FileFormat::kParquet;
  if (start.starts_with(kArrow)) return FileFormat::kArrow;
  return std::nullopt;
}

// The mark alone could be letters of a text; the number behind it, of the format's version, is
// none.
bool IsDuckDb(std::string_view start) {
  if (start.size() < kStart || start.substr(kDuckDbPlace, kDuckDb.size()) != kDuckDb) return false;
  return start.substr(kDuckDbPlace + kDuckDb.size()).find('\0') != std::string_view::npos;
}

void CheckDatabase(std::string_view start, const std::string& path) {
  const bool isSqlite = start.starts_with(kSqlite);
  if (!isSqlite && !IsDuckDb(start)) return;
  const std::string kind = isSqlite ? "sqlite:" : "duckdb:";
  throw HostIOError(path, "", "the file is a database; " + kind + path + " reads it");
}

}  // namespace

std::optional<FileFormat> FormatOfContent(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
  if (IsSheetFile(path)) return FileFormat::kSheets;
  std::ifstream file(path, std::ios::binary);
  std::string start(kStart, '\0');
  start.resize(static_cast<std::size_t>(file.read(start.data(), kStart).gcount()));
  CheckDatabase(start, path);
  std::string end(std::min(start.size(), kParquet.size()), '\0');
  file.clear();
  file.seekg(-static_cast<std::streamoff>(end.size()), std::ios::end);
  file.read(end.data(), static_cast<std::streamsize>(end.size()));
  return FormatOf(start, end);
}

void CheckTextContent(std::string_view bytes, const std::string& name) {
  std::optional<FileFormat> format = FormatOf(bytes, bytes);
  if (bytes.starts_with(kZip)) format = FileFormat::kSheets;
  if (!format) return;
  const std::string word = NamesOf(*format).fWord;
  throw HostIOError(name, "", "this is no text; --input-format " + word + " reads it");
}

}  // namespace MCHost
