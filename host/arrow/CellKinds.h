// What a column of cells that say what they are holds, settled by all of them.
//
// Texts that are dates or times in ISO 8601 are these as long as all are; numbers in texts stay
// texts. A column of several kinds is one of texts.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/arrow/CellRows.h"
#include "host/data/FieldType.h"

namespace MCHost {

class CellKinds {
 public:
  CellKinds(std::string name, FieldType declared);

  const std::string& Name() const { return fName; }

  // The kinds of CsvKinds.h that the cells have in common. Seconds that all are times of day are
  // times alone.
  unsigned Kinds() const;
  bool IsNumber() const;
  bool AreDigitsLost() const { return fbDigitsLost; }  // of a number beyond 2^53

  // Takes a cell that is there. False where it is not as declared. `place` is asked where the cell
  // is the first of its kind: a function without arguments.
  template <class Place>
  bool Observe(const RowCell& cell, const Place& place) {
    Seen& seen = fSeen[cell.fKind];
    if (seen.fCells++ == 0) seen = {1, cell.Shown(), place()};
    return fKinds == fDone || Narrow(cell);
  }

  // What the user should know of the column, one sentence each.
  std::vector<std::string> Notes() const;

 private:
  // Cells of a kind: how many, and the first.
  struct Seen {
    std::int64_t fCells = 0;
    std::string fText;
    std::string fPlace;
  };

  bool Narrow(const RowCell& cell);
  unsigned KindsOf(const RowCell& cell) const;
  std::string OddTexts() const;

  static constexpr unsigned fDone = 0;  // text, whatever comes

  std::string fName;
  FieldType fDeclared;
  unsigned fKinds;
  bool fbDigitsLost = false;
  Seen fSeen[4];
};

}  // namespace MCHost
