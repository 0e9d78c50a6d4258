// Makes feature selection components.
#pragma once

#include <memory>

#include "feature/IFSAlgorithm.h"

class FSFactory {
 public:
  // The component belongs to the caller, who also cancels it from then on; null when it could not
  // be made or the factory was cancelled, and GetStatus() says why. The settings are borrowed and
  // must outlive the component.
  std::unique_ptr<IFSAlgorithm> CreateFSAlgorithm(FSSettings* settings);

  // The status of the last creation.
  MCFeature::MCStatus GetStatus() const { return fStatus; }

  // Sets the status to the error 1. A cancelled factory makes nothing any more.
  void Cancel() { fStatus = MCFeature::Error(MCFeature::kCancelled); }

 private:
  MCFeature::MCStatus fStatus;
};
