// A stream of cases over an input adapter: what the drivers hand to the engines.
//
// A derived stream decides what is delivered, case by case (PreprocessCase) or for many cases at
// once (FilterCases). Each pass reads the table with a scan of its own, so several streams may read
// in turn. A failure to read ends the
// pass: the fail reason is kReadError and GetFailText() says what happened. Nothing is thrown.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "common/RecordIterator.h"
#include "host/session/HostIOError.h"

class KOVA_InputCaseIterator;
class UACaseScan;
class UAInputAdapter;

using ProcDSIterator = KOVA_InputCaseIterator;

class UAProcDataSourceIter : public MCCommon::MultiPassRecordIter {
 public:
  // The adapter is borrowed. `startNow` starts the first pass at once; a derived stream passes
  // false and starts when it is complete.
  UAProcDataSourceIter(UAInputAdapter* adapter, bool startNow);
  ~UAProcDataSourceIter() override;

  // Asked for each case, in file order, before it is delivered; false skips the case. The adapter's
  // case number and case iterator are at the case. Asked for a chunk of cases ahead.
  virtual bool PreprocessCase() { return true; }

  // Begins to read and looks for the first case to deliver. Reading an unstarted stream starts it.
  void Start();

  bool HasMore() override;
  const MCCommon::Record* NextRecord() override;
  const MCCommon::RecordBlock& NextBlock(std::size_t maxCases) override;
  FailReason GetFailReason() const override { return fFailReason; }

  // Moves on over the cases that NextBlock would deliver, and counts them as delivered, without
  // making a block of them.
  void SkipBlock();

  // What went wrong, after kReadError: null (empty) before.
  const MCHost::HostIOError* GetFailure() const { return fFailure ? &*fFailure : nullptr; }
  std::string GetFailText() const { return fFailure ? fFailure->what() : ""; }

  // 1 when the pass has no case at all to deliver, 3 after a read error, else 0.
  int GetState();

  // The record that NextRecord() will give, without moving on; null at the end. It stays valid
  // until the next call of NextRecord, NextBlock or NewPass.
  const MCCommon::Record* Current();

  // Goes back to the first case; with `startNow` the first case is looked for at once. A pass of
  // which nothing was taken yet is simply kept. False after a read error.
  [[nodiscard]] bool NewPass() override { return NewPass(true); }
  [[nodiscard]] bool NewPass(bool startNow);

  // The pass is the last one over the data: values stored through GetProcDS() reach the table.
  void SetLastPass();

  // How many cases the last delivery had, and their places among those that GetProcDS() stores
  // values for.
  std::size_t GetBlockSize() const { return fNTaken; }
  const std::size_t* GetBlockPlaces() const { return fAccepted.data() + fNext - fNTaken; }

  // Hands values that still wait to the table, as the end of the data does by itself; for a last
  // pass that was stopped. False when that failed.
  bool Finish();

  // The case iterator; it stays at a case (the last one of a block) until the stream looks for
  // another.
  ProcDSIterator* GetProcDS() const;

 protected:
  UAInputAdapter* GetAdapter() const { return fpAdapter; }

  // Gives the places of those of a chunk's cases that are to be delivered, in order, into an empty
  // list. Asks PreprocessCase for each; of a stream that overrides nothing, all are.
  virtual void FilterCases(std::size_t cases, std::vector<std::size_t>& accepted);
  static void AcceptAll(std::size_t cases, std::vector<std::size_t>& accepted);

  // Makes the case at that place the one that the adapter and its case iterator are at.
  void StandAt(std::size_t place);

 private:
  template <typename Action>
  bool Guard(Action action);
  void LoadChunk();
  bool Position();
  std::size_t Take(std::size_t maxCases);
  void Gather(const std::size_t* places, std::size_t cases);
  void Close();
  void EndPass();

  UAInputAdapter* fpAdapter;
  std::unique_ptr<UACaseScan> fpScan;  // null before the start of a pass
  std::vector<std::size_t> fAccepted;  // places of the chunk's cases to deliver
  std::size_t fNext = 0;               // of these
  std::size_t fNTaken = 0;             // of these with the last delivery
  bool fbTaken = false;                // something of this pass was delivered
  bool fbAtEnd = false;
  bool fbLastPass = false;
  FailReason fFailReason = kSuccess;
  std::optional<MCHost::HostIOError> fFailure;
  MCCommon::Record fRecord;
  MCCommon::RecordBlock fBlock;
  std::vector<std::vector<double>> fGathered;
};
