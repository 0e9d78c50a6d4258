// A source of data that can be opened again and again: a file, a query, a function of a caller.
//
// Every opening gives the same cases in the same order. The source must outlive the streams opened
// from it; one thread at a time.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

struct ArrowArrayStream;

namespace MCHost {

class IArrowSource {
 public:
  virtual ~IArrowSource() = default;

  // What messages call the source: a file's name, usually.
  virtual const std::string& Name() const = 0;

  // Fills `stream`, which the caller releases. `columns` chooses what the stream carries: positions
  // in the whole source, ascending and without repeats; null means all columns.
  // Throws HostIOError, and then leaves `stream` as it was.
  virtual void Open(const std::vector<int>* columns, ArrowArrayStream* stream) = 0;

  // The same cases in types that hold all that the source says of them, for passing them on.
  // Differs from Open where that takes what a reader of numbers and texts does best with.
  virtual void OpenOriginal(const std::vector<int>* columns, ArrowArrayStream* stream) {
    Open(columns, stream);
  }

  // What a table, which keeps doubles and texts, has of a column of OpenOriginal.
  enum class Kept { kPart, kAll, kAllOfIntegers };
  virtual Kept KeptOf(int /*column*/) { return Kept::kPart; }

  // Whether columns are of the types that the source says, whatever their cells look like. Those of
  // text are what all cells are, once the ones that mean nothing are left out.
  virtual bool HasTypes() const { return false; }

  // Number of cases when that is known without reading, otherwise -1.
  virtual std::int64_t CaseCount() const { return -1; }

  // Whether the source knows no more of its columns than its start told, because it is to be read
  // whole, and once. It has no case count then, and where reading it fails, LookAgain() decides.
  virtual bool IsReadOnce() const { return false; }

  // Called where reading such a source has failed: looks at all of it. True where it is sound, but
  // not what its start promised: what was read of it is void, and it must be opened again. False
  // where there was nothing more to look at. Throws HostIOError for what is wrong with the data.
  virtual bool LookAgain() { return false; }

  // How many columns can be read side by side in little memory (tens of megabytes). Less than all
  // of them for a format that keeps long stretches of each column together.
  virtual int ColumnsAtATime() const { return std::numeric_limits<int>::max(); }

  // What the user should know of how the source was read, one sentence each.
  virtual std::vector<std::string> Notes() const { return {}; }
};

}  // namespace MCHost
