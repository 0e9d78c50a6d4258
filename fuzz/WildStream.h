// A record stream in the Arrow C stream interface, made of a fuzzer's bytes: its formats, lengths,
// offsets, null counts, dictionary indices, text offsets and views may all be wrong, and any call
// may fail. Only what no reader can check is right: buffers are as long as the lengths say, and the
// offsets of texts lie within them.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <string>
#include <vector>

#include "host/data/ArrowCDataInterface.h"

namespace PredSelectFuzz {

class WildStream {
 public:
  explicit WildStream(FuzzedDataProvider& bytes);

  // A reader from the start, as many as are wanted. Nothing that a reader gives may outlive this.
  ArrowArrayStream Open();

  // How many streams, schemas and arrays were given out and are not released yet.
  int Lent() const { return fLent; }

  // Of a column, by its number; "" behind the last.
  std::string NameOf(std::size_t column) const;

 private:
  // A schema, or one of its columns.
  struct Kind {
    std::string fFormat, fName, fMetadata;
    bool fIsNamed = true;
    std::vector<Kind> fColumns;
    std::vector<Kind> fDictionary;  // one or none
  };
  using Words = std::vector<std::uint64_t>;  // so that any type is aligned
  // A batch, or the cells of one of its columns.
  struct Cells {
    std::int64_t fLength = 0, fNulls = 0, fOffset = 0, fBufferCount = 0;
    std::vector<Words> fBuffers;  // an empty one is not there
    std::vector<Cells> fColumns;
    std::vector<Cells> fDictionary;  // one or none
  };
  struct Reader;
  struct LentKind;
  struct LentCells;

  static Kind ColumnOf(FuzzedDataProvider& bytes, std::size_t number);
  static Cells CellsOf(FuzzedDataProvider& bytes, const Kind& kind, std::int64_t length);
  void Lend(const Kind& kind, ArrowSchema* schema);
  void Lend(const Cells& cells, ArrowArray* array);

  Kind fKind;
  std::vector<Cells> fBatches;
  int fFailsAt = -1;  // the call of each reader that fails
  int fLent = 0;
};

}  // namespace PredSelectFuzz
