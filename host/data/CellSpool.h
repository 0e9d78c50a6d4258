// The cells of a table's own columns in a temporary file, for sources whose columns cannot all be
// read side by side in little memory.
//
// The file holds block after block of kBlockCases cases, in each block one column after the other,
// so a scan over all columns moves through it from front to back. It is mapped for reading: cells
// are looked at where they are, and memory already passed is given back. The file has no name from
// the start and is gone with the object, however the program ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace MCHost {

class CellSpool {
 public:
  static constexpr std::size_t kBlockCases = 512;

  // For columns of numbers (8 bytes a cell) and of codes (4 bytes), in the system's folder for
  // temporary files. Throws HostIOError.
  explicit CellSpool(const std::vector<bool>& numeric);
  CellSpool(const CellSpool&) = delete;
  CellSpool& operator=(const CellSpool&) = delete;
  ~CellSpool();

  // Stores cells: doubles or codes, as the column has it. REQUIRES: the cells lie in one block.
  // Throws HostIOError.
  void Write(std::size_t column, std::int64_t firstCase, const void* cells, std::size_t n);

  // Ends writing: there are so many cases. Throws HostIOError.
  void Show(std::int64_t nCases);

  // The cells from a case to the end of its block: doubles or codes, as the column has it.
  // REQUIRES: Show(), and the case is there.
  const void* Cells(std::size_t column, std::int64_t firstCase) const;

  // Gives back the memory of the block that holds the case; its cells can still be looked at.
  void Forget(std::int64_t caseNumber) const;

 private:
  struct Layout {
    std::size_t fCellBytes;
    std::size_t fOffset;  // in a block
  };

  std::size_t OffsetOf(std::size_t column, std::int64_t firstCase) const;
  void Fail(const char* what);

  std::string fFolder;
  int fDescriptor = -1;
  std::vector<Layout> fColumns;
  std::size_t fBlockBytes = 0;
  std::size_t fBytes = 0;
  const char* fpMapped = nullptr;
};

}  // namespace MCHost
