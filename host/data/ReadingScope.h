// Who is told how much of the data has been read, while a table is made of them.
#pragma once

#include <cstdint>
#include <functional>

namespace MCHost {

class ReadingScope {
 public:
  // Receives the number of cells that have been read in the scope so far.
  using Listener = std::function<void(std::int64_t cells)>;

  // For this thread, until the scope ends.
  explicit ReadingScope(Listener listener);
  ReadingScope(const ReadingScope&) = delete;
  ReadingScope& operator=(const ReadingScope&) = delete;
  ~ReadingScope();

  // So many cells more. Tells nobody where there is no scope.
  static void Report(std::int64_t cells);

 private:
  Listener fListener;
  std::int64_t fNCells = 0;
  ReadingScope* fpPrevious;
};

}  // namespace MCHost
