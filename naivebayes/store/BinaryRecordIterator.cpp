#include "naivebayes/store/BinaryRecordIterator.h"

#include <algorithm>
#include <iostream>

namespace MCNaive {

using MCCommon::RecordBlock;

BinaryRecordIterator::BinaryRecordIterator(std::FILE* file, int recordSize,
                                           const std::string& fileName)
    : fpFile(file),
      fFileName(fileName),
      fRecordSize(recordSize),
      fvAhead(RecordBlock::PreferredCases(fRecordSize) * fRecordSize),
      fCurRecord(fRecordSize),
      fStatus(kReadError) {
  if (file == nullptr) {
    std::cerr << "Error: file handle is NULL in BinaryRecordIterator constructor\n";
  } else {
    static_cast<void>(BinaryRecordIterator::NewPass());
  }
}

BinaryRecordIterator::~BinaryRecordIterator() = default;

void BinaryRecordIterator::ReadAhead() {
  const std::size_t read =
      fbTorn ? 0 : std::fread(fvAhead.data(), sizeof(double), fvAhead.size(), fpFile.get());
  fNext = 0;
  fNAhead = read / fRecordSize;
  fbTorn = fbTorn || read % fRecordSize != 0;
  if (fNAhead > 0) {
    fStatus = kSuccess;
  } else {
    const bool atEnd = std::feof(fpFile.get()) != 0 && std::ferror(fpFile.get()) == 0;
    fStatus = atEnd && !fbTorn ? kNoRecords : kReadError;
  }
}

void BinaryRecordIterator::Advance(std::size_t records) {
  fNext += records;
  if (fNext == fNAhead) ReadAhead();
}

const MCCommon::Record* BinaryRecordIterator::NextRecord() {
  if (fStatus != kSuccess) return nullptr;
  const double* values = &fvAhead[fNext * fRecordSize];
  for (std::size_t j = 0; j < fRecordSize; ++j) fCurRecord[j] = values[j];
  Advance(1);
  return &fCurRecord;
}

const RecordBlock& BinaryRecordIterator::NextBlock(std::size_t maxCases) {
  const std::size_t cases = fStatus == kSuccess ? std::min(maxCases, fNAhead - fNext) : 0;
  fBlock.Reset(cases > 0 ? fRecordSize : 0, cases);
  if (cases == 0) return fBlock;
  fvColumns.resize(fRecordSize * cases);
  const double* values = &fvAhead[fNext * fRecordSize];
  for (std::size_t j = 0; j < fRecordSize; ++j) {
    double* column = &fvColumns[j * cases];
    for (std::size_t i = 0; i < cases; ++i) column[i] = values[i * fRecordSize + j];
    fBlock.SetColumn(j, column);
  }
  Advance(cases);
  return fBlock;
}

bool BinaryRecordIterator::NewPass() {
  if (!fpFile || std::fseek(fpFile.get(), 0, SEEK_SET) != 0) {
    fStatus = kReadError;
    return false;
  }
  std::clearerr(fpFile.get());
  fbTorn = false;
  ReadAhead();
  return fStatus != kReadError;
}

}  // namespace MCNaive
