// The forms in which results and data are written, each with its word and the endings of its files:
// once for the command line, the renderers and the data files.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace MCHost {

// kSheets: a workbook.
enum class FileFormat {
  kText,
  kMarkdown,
  kHtml,
  kCsv,
  kTsv,
  kParquet,
  kArrow,
  kJsonLines,
  kJson,
  kSheets
};

struct FileFormatNames {
  FileFormat fFormat;
  const char* fWord;                  // "markdown"
  std::vector<const char*> fEndings;  // ".md"
  bool fbResult;                      // results may have it
  bool fbRead;                        // data may have it
  bool fbWritten;                     // data that are written may
};

// In the order of the enumeration.
const std::vector<FileFormatNames>& FileFormats();

const FileFormatNames& NamesOf(FileFormat format);

// By the ending of the name, in small letters or not; nothing for an ending that tells none.
std::optional<FileFormat> FormatOfPath(const std::string& path);

// ".csv, .tsv, ..." of those that have the property.
std::string EndingsOf(bool FileFormatNames::*property);

inline bool IsDelimited(FileFormat format) {
  return format == FileFormat::kCsv || format == FileFormat::kTsv;
}

// Of delimited text.
inline char DelimiterOf(FileFormat format) { return format == FileFormat::kTsv ? '\t' : ','; }

}  // namespace MCHost
