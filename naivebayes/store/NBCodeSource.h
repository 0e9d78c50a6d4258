// Where the engine's passes take their codes from, block by block.
#pragma once

#include "naivebayes/store/NBCodeBlock.h"

class NBCodeSource {
 public:
  virtual ~NBCodeSource() = default;

  // The next cases, at least one and at most RecordBlock::kMaxCases; null at the end of the pass
  // and after a failure. They stay valid until the next call.
  virtual const NBCodeBlock* NextCodes() = 0;

  // Whether the pass ended early because the source failed.
  virtual bool HasFailed() const = 0;
};
