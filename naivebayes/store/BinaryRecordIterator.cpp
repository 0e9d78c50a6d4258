#include "naivebayes/store/BinaryRecordIterator.h"

#include <iostream>
#include <utility>

namespace MCNaive {

BinaryRecordIterator::BinaryRecordIterator(std::FILE* file, int recordSize,
                                           const std::string& fileName)
    : fpFile(file), fFileName(fileName), fvAhead(recordSize), fStatus(kReadError) {
  if (file == nullptr) {
    std::cerr << "Error: file handle is NULL in BinaryRecordIterator constructor\n";
  } else {
    static_cast<void>(BinaryRecordIterator::NewPass());
  }
}

BinaryRecordIterator::~BinaryRecordIterator() = default;

void BinaryRecordIterator::ReadAhead() {
  const std::size_t read = std::fread(fvAhead.data(), sizeof(double), fvAhead.size(), fpFile.get());
  if (read == fvAhead.size()) {
    fStatus = kSuccess;
  } else {
    fStatus = read == 0 && std::feof(fpFile.get()) != 0 && std::ferror(fpFile.get()) == 0
                  ? kNoRecords
                  : kReadError;
  }
}

const MCCommon::Record* BinaryRecordIterator::NextRecord() {
  if (fStatus != kSuccess) return nullptr;
  if (fCurRecord.Size() != fvAhead.size()) fCurRecord = MCCommon::Record(fvAhead.size());
  for (std::size_t j = 0; j < fvAhead.size(); ++j) fCurRecord[j] = fvAhead[j];
  ReadAhead();
  return &fCurRecord;
}

bool BinaryRecordIterator::NewPass() {
  if (!fpFile || std::fseek(fpFile.get(), 0, SEEK_SET) != 0) {
    fStatus = kReadError;
    return false;
  }
  std::clearerr(fpFile.get());
  ReadAhead();
  return fStatus != kReadError;
}

}  // namespace MCNaive
