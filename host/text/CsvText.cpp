#include "host/text/CsvText.h"

namespace MCHost {

bool IsPlainCsvText(std::string_view text, char delimiter) {
  // A byte order mark would be skipped at the start of the file.
  return text.find(delimiter) == std::string_view::npos && !text.starts_with("\xEF\xBB\xBF");
}

void AppendCsvText(std::string& row, std::string_view text, char delimiter) {
  const bool needsQuotes = text.empty() || text.find_first_of("\"\r\n") != std::string_view::npos;
  if (!needsQuotes && IsPlainCsvText(text, delimiter)) {
    row += text;
    return;
  }
  row += '"';
  for (const char c : text) row.append(c == '"' ? 2 : 1, c);
  row += '"';
}

}  // namespace MCHost
