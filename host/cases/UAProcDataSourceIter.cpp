#include "host/cases/UAProcDataSourceIter.h"

#include <algorithm>
#include <exception>
#include <numeric>
#include <typeinfo>

#include "host/cases/KOVA_InputCaseIterator.h"
#include "host/cases/UACaseScan.h"
#include "host/cases/UAInputAdapter.h"
#include "host/session/HostBlocks.h"
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
    fFailure = error;
    fbAtEnd = true;
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

void UAProcDataSourceIter::LoadChunk() {
  fAccepted.clear();
  fNext = fNTaken = 0;
  Guard([this] {
    if (fbLastPass) GetProcDS()->WriteValues();
    fbAtEnd = !fpAdapter->NextChunk(*fpScan);
    if (fbAtEnd) {
      fFailReason = kNoRecords;
      return false;
    }
    FilterCases(fpScan->Cases(), fAccepted);
    fpAdapter->LeaveOutIncomplete(*fpScan, fAccepted);
    return true;
  });
}

void UAProcDataSourceIter::AcceptAll(std::size_t cases, std::vector<std::size_t>& accepted) {
  accepted.resize(cases);
  std::iota(accepted.begin(), accepted.end(), std::size_t{0});
}

void UAProcDataSourceIter::FilterCases(std::size_t cases, std::vector<std::size_t>& accepted) {
  if (typeid(*this) == typeid(UAProcDataSourceIter)) return AcceptAll(cases, accepted);
  for (std::size_t i = 0; i < cases; ++i) {
    StandAt(i);
    if (PreprocessCase()) accepted.push_back(i);
  }
}

void UAProcDataSourceIter::StandAt(std::size_t place) { fpScan->SetCase(place); }

// Goes to the next case to deliver.
bool UAProcDataSourceIter::Position() {
  if (!fpScan && fFailReason != kReadError) {
    Start();
    return !fbAtEnd;
  }
  if (!fpScan) return false;
  fpAdapter->Follow(fpScan.get());
  GetProcDS()->SetLastPass(fbLastPass);
  while (!fbAtEnd && fNext == fAccepted.size()) LoadChunk();
  if (!fbAtEnd) StandAt(fAccepted[fNext]);
  return !fbAtEnd;
}

bool UAProcDataSourceIter::HasMore() { return Position(); }

const MCCommon::Record* UAProcDataSourceIter::Current() {
  if (!Position()) return nullptr;
  for (std::size_t j = 0; j < fRecord.Size(); ++j) {
    fRecord[j] = fpScan->Column(j)[fAccepted[fNext]];
  }
  return &fRecord;
}

// The waiting case and those of the same chunk that follow it; how many.
std::size_t UAProcDataSourceIter::Take(std::size_t maxCases) {
  fNTaken = std::min(maxCases, fAccepted.size() - fNext);
  fNext += fNTaken;
  StandAt(fAccepted[fNext - 1]);
  fbTaken = true;
  if (fpScan->Pass() == 0) fpAdapter->CountDelivered(static_cast<int>(fNTaken));
  return fNTaken;
}

const MCCommon::Record* UAProcDataSourceIter::NextRecord() {
  const MCCommon::Record* record = Current();
  if (record != nullptr) Take(1);
  return record;
}

void UAProcDataSourceIter::SkipBlock() {
  if (Position()) Take(fAccepted.size());
}

const MCCommon::RecordBlock& UAProcDataSourceIter::NextBlock(std::size_t maxCases) {
  fBlock.Reset(0, 0);
  if (!Position()) return fBlock;
  const std::size_t cases = Take(maxCases);
  fBlock.Reset(fRecord.Size(), cases);
  const std::size_t* places = GetBlockPlaces();
  if (places[cases - 1] - places[0] + 1 == cases) {
    for (std::size_t j = 0; j < fRecord.Size(); ++j) {
      fBlock.SetColumn(j, fpScan->Column(j) + places[0]);
    }
  } else {
    Gather(places, cases);
  }
  return fBlock;
}

void UAProcDataSourceIter::Gather(const std::size_t* places, std::size_t cases) {
  fGathered.resize(fRecord.Size());
  for (std::size_t j = 0; j < fRecord.Size(); ++j) {
    const double* column = fpScan->Column(j);
    fGathered[j].resize(cases);
    std::transform(places, places + cases, fGathered[j].begin(),
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
  fAccepted.clear();
  fNext = fNTaken = 0;
  fbTaken = fbAtEnd = false;
  if (fFailReason == kNoRecords) fFailReason = kSuccess;
}

ProcDSIterator* UAProcDataSourceIter::GetProcDS() const { return fpAdapter->GetDSIterator(); }
