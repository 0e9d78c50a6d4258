#include "host/data/FileFormat.h"

#include <algorithm>
#include <cstddef>

namespace MCHost {

const std::vector<FileFormatNames>& FileFormats() {
  // Of results, read, written.
  static const std::vector<FileFormatNames> formats = {
      {FileFormat::kText, "text", {".txt"}, true, false, false},
      {FileFormat::kMarkdown, "markdown", {".md"}, true, false, true},
      {FileFormat::kHtml, "html", {".html"}, true, false, false},
      {FileFormat::kCsv, "csv", {".csv"}, true, true, true},
      {FileFormat::kTsv, "tsv", {".tsv"}, true, true, true},
      {FileFormat::kParquet, "parquet", {".parquet"}, true, true, true},
      {FileFormat::kArrow, "arrow", {".arrow", ".feather"}, true, true, true},
      {FileFormat::kJsonLines, "jsonl", {".jsonl", ".ndjson"}, true, true, true},
      {FileFormat::kJson, "json", {".json"}, true, true, false},
      {FileFormat::kSheets, "xlsx", {".xlsx", ".ods"}, false, true, false}};
  return formats;
}

const FileFormatNames& NamesOf(FileFormat format) {
  return FileFormats()[static_cast<std::size_t>(format)];
}

std::string EndingsOf(bool FileFormatNames::*property) {
  std::string endings;
  for (const FileFormatNames& format : FileFormats()) {
    if (!(format.*property)) continue;
    for (const char* ending : format.fEndings) {
      endings += (endings.empty() ? "" : ", ") + std::string(ending);
    }
  }
  return endings;
}

std::optional<FileFormat> FormatOfPath(const std::string& path) {
  std::string end = path.substr(std::min(path.rfind('.'), path.size()));
  for (char& c : end) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  for (const FileFormatNames& format : FileFormats()) {
    if (std::find(format.fEndings.begin(), format.fEndings.end(), end) != format.fEndings.end()) {
      return format.fFormat;
    }
  }
  return std::nullopt;
}

}  // namespace MCHost
