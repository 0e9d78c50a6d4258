#include "host/cases/UAProcDataSourceIter.h"

#include <algorithm>
#include <exception>

#include "host/cases/KOVA_InputCaseIterator.h"
#include "host/cases/UACaseScan.h"
#include "host/cases/UAInputAdapter.h"
#include "host/session/HostBlocks.h"
#include "host/session/HostIOError.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

UAProcDataSourceIter::UAProcDataSourceIter(UAInputAdapter* adapter, bool startNow)
    : fpAdapter(adapter), fRecord(adapter->GetNRecordVars()) {
  if (startNow) Start();
}

UAProcDataSourceIter::~UAProcDataSourceIter() {
  try {
    Finish();
  } catch (const std::exception&) {
    // There is no memory for the values; what needs them has called Finish() itself.
  }
  EndPass();
}

template <typename Action>
bool UAProcDataSourceIter::Guard(Action action) {
  try {
    return action();
  } catch (const MCHost::HostIOError& error) {
    fFailReason = kReadError;
    fFailText = error.what();
    fbAtEnd = true;
    fbPositioned = false;
    return false;
  }
}

void UAProcDataSourceIter::Start() {
  if (!fpScan && fFailReason != kReadError) {
    Guard([this] {
      fpScan = fpAdapter->OpenScan();
      return true;
    });
  }
  Position();
}

bool UAProcDataSourceIter::LoadChunk() {
  fNext = 0;
  return Guard([this] {
    if (fbLastPass) GetProcDS()->WriteValues();
    if (fpAdapter->NextChunk(*fpScan)) return true;
    fbAtEnd = true;
    fFailReason = kNoRecords;
    return false;
  });
}

bool UAProcDataSourceIter::Accept(std::size_t i) {
  fpScan->SetCase(i);
  return PreprocessCase() && !fpAdapter->IsLeftOut(*fpScan, i);
}

// Goes to the next case to deliver unless one is waiting already.
bool UAProcDataSourceIter::Position() {
  if (!fpScan && fFailReason != kReadError) {
    Start();
    return fbPositioned;
  }
  if (!fpScan) return false;
  fpAdapter->Follow(fpScan.get());
  GetProcDS()->SetLastPass(fbLastPass);
  while (!fbPositioned && !fbAtEnd) {
    if (fNext == fpScan->Cases()) {
      LoadChunk();
    } else {
      fbPositioned = Accept(fNext++);
    }
  }
  return fbPositioned;
}

bool UAProcDataSourceIter::HasMore() { return Position(); }

const MCCommon::Record* UAProcDataSourceIter::Current() {
  if (!Position()) return nullptr;
  for (std::size_t j = 0; j < fRecord.Size(); ++j) fRecord[j] = fpScan->Column(j)[fNext - 1];
  return &fRecord;
}

const MCCommon::Record* UAProcDataSourceIter::NextRecord() {
  const MCCommon::Record* record = Current();
  if (record == nullptr) return nullptr;
  fbPositioned = false;
  fbTaken = true;
  if (fpScan->Pass() == 0) fpAdapter->CountDelivered(1);
  return record;
}

const MCCommon::RecordBlock& UAProcDataSourceIter::NextBlock(std::size_t maxCases) {
  fBlock.Reset(0, 0);
  if (!Position()) return fBlock;
  Collect(maxCases);
  const std::size_t first = fAccepted.front();
  fBlock.Reset(fRecord.Size(), fAccepted.size());
  if (fAccepted.back() - first + 1 == fAccepted.size()) {
    for (std::size_t j = 0; j < fRecord.Size(); ++j) fBlock.SetColumn(j, fpScan->Column(j) + first);
  } else {
    Gather();
  }
  fbPositioned = false;
  fbTaken = true;
  if (fpScan->Pass() == 0) fpAdapter->CountDelivered(static_cast<int>(fAccepted.size()));
  return fBlock;
}

// The waiting case and those of the same chunk that follow it.
void UAProcDataSourceIter::Collect(std::size_t maxCases) {
  fAccepted.assign(1, fNext - 1);
  while (fAccepted.size() < maxCases && fNext < fpScan->Cases()) {
    if (Accept(fNext)) fAccepted.push_back(fNext);
    ++fNext;
  }
}

void UAProcDataSourceIter::Gather() {
  fGathered.resize(fRecord.Size());
  for (std::size_t j = 0; j < fRecord.Size(); ++j) {
    const double* column = fpScan->Column(j);
    fGathered[j].resize(fAccepted.size());
    std::transform(fAccepted.begin(), fAccepted.end(), fGathered[j].begin(),
                   [column](std::size_t i) { return column[i]; });
    fBlock.SetColumn(j, fGathered[j].data());
  }
}

int UAProcDataSourceIter::GetState() {
  if (!Position() && !fbTaken) return fFailReason;
  return fFailReason == kReadError ? kReadError : kSuccess;
}

bool UAProcDataSourceIter::NewPass(bool startNow) {
  if (fFailReason == kReadError) return false;
  if (fpScan && (fbTaken || fbAtEnd)) Close();
  if (fFailReason == kReadError) return false;
  if (startNow) Start();
  return fFailReason != kReadError;
}

void UAProcDataSourceIter::SetLastPass() {
  fbLastPass = true;
  GetProcDS()->SetLastPass(true);
  MCHost::CurrentSession().CommonBlock().fLastPass = 1;
}

bool UAProcDataSourceIter::Finish() {
  if (!fpScan || !fbLastPass || fpScan->Cases() == 0) return fFailReason != kReadError;
  return Guard([this] {
    fpAdapter->Follow(fpScan.get());
    GetProcDS()->WriteValues();
    return true;
  });
}

void UAProcDataSourceIter::Close() {
  Finish();
  EndPass();
}

void UAProcDataSourceIter::EndPass() {
  if (fpAdapter->IsFollowing(fpScan.get())) fpAdapter->Follow(nullptr);
  fpScan.reset();
  fNext = 0;
  fbPositioned = fbTaken = fbAtEnd = false;
  if (fFailReason == kNoRecords) fFailReason = kSuccess;
}

ProcDSIterator* UAProcDataSourceIter::GetProcDS() const { return fpAdapter->GetDSIterator(); }
