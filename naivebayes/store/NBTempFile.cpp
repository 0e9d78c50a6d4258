#include "naivebayes/store/NBTempFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <utility>

namespace MCNaive {

namespace {

// A descriptor of a file that did not exist before, or -1.
int OpenNumbered(const std::string& prefix, std::string& name) {
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  int descriptor;
  do {
    name = prefix + "_nb" + std::to_string(std::rand()) + ".tmp";
    descriptor = open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
  } while (descriptor < 0 && (errno == EEXIST || errno == EINTR));
  return descriptor;
}

// The name form of tmpnam(), without its race between naming and opening.
int OpenUnnamed(std::string& name) {
  name = P_tmpdir "/fileXXXXXX";
  return mkostemp(name.data(), O_CLOEXEC);
}

}  // namespace

NBTempFile::~NBTempFile() {
  if (fpFile != nullptr) std::fclose(fpFile);
}

bool NBTempFile::Open(const std::string& prefix) {
  const int descriptor = prefix.empty() ? OpenUnnamed(fName) : OpenNumbered(prefix, fName);
  if (descriptor < 0) return false;
  unlink(fName.c_str());
  fpFile = fdopen(descriptor, "w+b");
  if (fpFile == nullptr) close(descriptor);
  return fpFile != nullptr;
}

bool NBTempFile::Write(const MCCommon::RecordBlock& block) {
  fvRow.resize(block.Columns());
  for (std::size_t i = 0; i < block.Cases(); ++i) {
    for (std::size_t j = 0; j < fvRow.size(); ++j) fvRow[j] = block.Column(j)[i];
    if (std::fwrite(fvRow.data(), sizeof(double), fvRow.size(), fpFile) != fvRow.size()) {
      return false;
    }
  }
  return true;
}

bool NBTempFile::Flush() { return std::fflush(fpFile) == 0; }

std::FILE* NBTempFile::Release() { return std::exchange(fpFile, nullptr); }

}  // namespace MCNaive
