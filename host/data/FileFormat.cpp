#include "host/data/FileFormat.h"

#include <algorithm>

namespace MCHost {

const std::vector<FileFormatNames>& FileFormats() {
  static const std::vector<FileFormatNames> formats = {
      {FileFormat::kText, "text", {".txt"}, false},
      {FileFormat::kJson, "json", {".json"}, false},
      {FileFormat::kCsv, "csv", {".csv"}, true},
      {FileFormat::kTsv, "tsv", {".tsv"}, true},
      {FileFormat::kMarkdown, "markdown", {".md"}, false},
      {FileFormat::kJsonLines, "jsonl", {".jsonl"}, false},
      {FileFormat::kParquet, "parquet", {".parquet"}, true},
      {FileFormat::kArrow, "arrow", {".arrow", ".feather"}, true}};
  return formats;
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
