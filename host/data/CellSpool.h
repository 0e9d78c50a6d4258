// The cells of a table's own columns in a temporary file, for sources whose columns cannot all be
// read side by side in little memory, or that are to be read only once.
//
// Columns come group by group. For each group the file holds block after block of BlockCases()
// cases, and in a block one column after the other, each in the form that takes the least bytes
// there (CellForm): a scan over all columns moves through each group from front to back. It is
// mapped for reading, and memory already passed is given back. The file has no name from the start
// and is gone with the object, however the program ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/data/CellForm.h"

namespace MCHost {

class CellSpool {
 public:
  // For columns of numbers and of codes, in the system's folder for temporary files. Throws
  // HostIOError.
  explicit CellSpool(const std::vector<bool>& numeric);
  CellSpool(const CellSpool&) = delete;
  CellSpool& operator=(const CellSpool&) = delete;
  ~CellSpool();

  // A power of two, less where there are many columns.
  std::size_t BlockCases() const { return fBlockCases; }

  // Begins a group of the columns behind those of the group before. Throws HostIOError.
  void Begin(std::size_t nColumns);

  // Where the next cells of a column of the group go, and how many of them at most. REQUIRES: a
  // column of numbers, of codes.
  double* NextNumbers(std::size_t column) { return fColumns[column].fNumbers.data() + fnOpen; }
  std::int32_t* NextCodes(std::size_t column) { return fColumns[column].fCodes.data() + fnOpen; }
  std::size_t Room() const { return fBlockCases - fnOpen; }

  // So many cells of each column of the group have been put there. Throws HostIOError.
  void Advance(std::size_t n);

  // Ends writing. Throws HostIOError.
  void Show();

  // n cells from a case on, where they lie or in the buffer. REQUIRES: Show(); the cases are there,
  // and in one block; a column of numbers, of codes.
  const double* Read(std::size_t column, std::int64_t firstCase, std::size_t n,
                     std::vector<double>& buffer) const;
  const std::int32_t* Read(std::size_t column, std::int64_t firstCase, std::size_t n,
                           std::vector<std::int32_t>& buffer) const;

  // Gives back the memory of the block that holds the case; its cells can still be looked at.
  void Forget(std::int64_t caseNumber) const;

 private:
  // The cells of the block that is being filled are of one kind.
  struct Column {
    bool fbNumeric = true;
    std::size_t fGroup = 0;
    std::size_t fPlace = 0;  // in the group
    std::vector<double> fNumbers;
    std::vector<std::int32_t> fCodes;
  };
  struct Group {
    std::size_t fFirst = 0;
    std::size_t fEnd = 0;
    std::vector<std::uint64_t> fBlocks;  // where each begins in the file, and the last one ends
  };
  // At the start of a block, of each column of the group.
  struct Place {
    std::uint64_t fOffset;  // in the block
    CellForm fForm;
  };

  void EndGroup();
  void StoreBlock();
  template <class T>
  Place Store(const std::vector<T>& cells, T missing);
  void WriteOut();
  template <class T>
  const T* ReadCells(std::size_t column, std::int64_t firstCase, std::size_t n, T missing,
                     std::vector<T>& buffer) const;
  void Fail(const char* what);

  std::string fFolder;
  int fDescriptor = -1;
  std::size_t fBlockCases;
  std::vector<Column> fColumns;
  std::vector<Group> fGroups;
  std::size_t fnOpen = 0;        // cases of the block that is being filled
  std::vector<char> fUnwritten;  // behind what the file holds
  std::uint64_t fnWritten = 0;
  const char* fpMapped = nullptr;
};

}  // namespace MCHost
