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

bool NBTempFile::Write(const NBCodeBlock& codes, bool withWeight) {
  const std::size_t first = withWeight ? 2 : 1, size = first + codes.Inputs();
  fvRecords.resize(codes.Cases() * size);
  for (std::size_t i = 0; i < codes.Cases(); ++i) {
    fvRecords[i * size] = codes.Targets()[i];
    if (withWeight) fvRecords[i * size + 1] = codes.Weights()[i];
  }
  for (int j = 0; j < codes.Inputs(); ++j) {
    double* out = fvRecords.data() + first + j;
    const auto spread = [&](const auto* values) {
      for (std::size_t i = 0; i < codes.Cases(); ++i) out[i * size] = values[i];
    };
    std::visit(spread, codes.Codes(j));
  }
  return std::fwrite(fvRecords.data(), sizeof(double), fvRecords.size(), fpFile) ==
         fvRecords.size();
}

bool NBTempFile::Flush() { return std::fflush(fpFile) == 0; }

std::FILE* NBTempFile::Release() { return std::exchange(fpFile, nullptr); }

}  // namespace MCNaive
