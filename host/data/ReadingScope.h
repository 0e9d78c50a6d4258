// Who is told what the data are and how much of them has been read, while a table is made of them.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace MCHost {

class ReadingScope {
 public:
  // Receives the number of cells that have been read in the scope so far.
  using Listener = std::function<void(std::int64_t cells)>;
  // Receives the names of the columns, once, as soon as they are known. What it throws ends the
  // reading.
  using ColumnsListener = std::function<void(const std::vector<std::string>& names)>;

  // For this thread, until the scope ends.
  ReadingScope(ColumnsListener columns, Listener cells);
  ReadingScope(const ReadingScope&) = delete;
  ReadingScope& operator=(const ReadingScope&) = delete;
  ~ReadingScope();

  // The columns, and so many cells more. Tell nobody where there is no scope.
  static void ReportColumns(const std::vector<std::string>& names);
  static void Report(std::int64_t cells);

 private:
  ColumnsListener fColumns;
  Listener fCells;
  bool fbColumnsKnown = false;
  std::int64_t fNCells = 0;
  ReadingScope* fpPrevious;
};

}  // namespace MCHost
