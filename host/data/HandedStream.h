// An Arrow C stream that an application has handed over, as a source of data.
//
// Held, its batches are kept where the producer has put them and shown again on every opening, so
// that nothing is copied. Passed, they go by once: for a table that puts its cells aside.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/data/IArrowSource.h"
#include "host/data/SharedArrow.h"

namespace MCHost {

class HandedStream final : public IArrowSource {
 public:
  enum class Use { kHeld, kPassed };

  // Takes the stream over and leaves it released, also when it throws HostIOError. Held, it is read
  // to its end here.
  HandedStream(ArrowArrayStream* stream, std::string name, Use use);

  const std::string& Name() const override { return fName; }
  // Streams of a passed source go on where the one before has stopped.
  void Open(const std::vector<int>* columns, ArrowArrayStream* stream) override;
  std::int64_t CaseCount() const override { return fNCases; }
  bool IsReadOnce() const override { return fUse == Use::kPassed; }

 private:
  class Incoming;
  struct Outgoing;

  // Throws HostIOError for columns that no table takes, before a long stream is read in vain.
  void CheckColumns();

  std::string fName;
  Use fUse;
  std::shared_ptr<Incoming> fpIncoming;
  SharedSchema fpSchema;
  std::vector<SharedBatch> fBatches;  // held
  std::int64_t fNCases = -1;
};

}  // namespace MCHost
