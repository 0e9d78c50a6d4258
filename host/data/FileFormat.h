// The forms in which results and data are written, each with its word and the endings of its files:
// once for the command line, the renderers and the data files.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace MCHost {

enum class FileFormat { kText, kJson, kCsv, kTsv, kMarkdown, kJsonLines, kParquet, kArrow };

struct FileFormatNames {
  FileFormat fFormat;
  const char* fWord;                  // "markdown"
  std::vector<const char*> fEndings;  // ".md"
  bool fbData;                        // of data files, too
};

// In the order of the enumeration.
const std::vector<FileFormatNames>& FileFormats();

// By the ending of the name, in small letters or not; nothing for an ending that tells none.
std::optional<FileFormat> FormatOfPath(const std::string& path);

inline bool IsDelimited(FileFormat format) {
  return format == FileFormat::kCsv || format == FileFormat::kTsv;
}

// Of delimited text.
inline char DelimiterOf(FileFormat format) { return format == FileFormat::kTsv ? '\t' : ','; }

}  // namespace MCHost
