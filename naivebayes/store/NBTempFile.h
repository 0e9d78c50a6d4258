// A temporary file for records: made exclusively and for its owner alone, and nameless from the
// moment it is open.
//
// Since the name is removed at once, nothing is left behind after success, error, cancel, exception
// or a killed process, and nothing planted under the name is followed or removed.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "naivebayes/store/NBCodeBlock.h"

namespace MCNaive {

class NBTempFile {
 public:
  NBTempFile() = default;
  NBTempFile(const NBTempFile&) = delete;
  NBTempFile& operator=(const NBTempFile&) = delete;
  ~NBTempFile();

  // Opens a new file for writing and reading. Its name is the prefix, "_nb", a random number and
  // ".tmp"; without a prefix it is a name in the system's temporary directory. False on failure.
  [[nodiscard]] bool Open(const std::string& prefix);

  // Writes the cases of a block as processed records, one after another, in the form that
  // BinaryRecordIterator reads; false on a short write. Others may read such a file, too, so its
  // numbers are doubles, although all of them but weights are codes.
  [[nodiscard]] bool Write(const NBCodeBlock& codes, bool withWeight);
  // Brings everything to the file; false when not all of it could be written.
  [[nodiscard]] bool Flush();

  // Gives the open file away; the caller closes it.
  std::FILE* Release();
  const std::string& GetName() const { return fName; }

 private:
  std::FILE* fpFile = nullptr;
  std::string fName;
  std::vector<double> fvRecords;
};

}  // namespace MCNaive
