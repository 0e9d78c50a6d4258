#include "feature/FSFactory.h"

#include "feature/FSAlgorithm.h"
#include "feature/FSWithinMemory.h"

using MCFeature::MCStatus;

std::unique_ptr<IFSAlgorithm> FSFactory::CreateFSAlgorithm(FSSettings* settings) {
  if (fStatus.GetErrorCode() == MCFeature::kCancelled) return nullptr;
  std::unique_ptr<FSAlgorithm> component;
  fStatus = FSWithinMemory([&] {
    component = std::make_unique<FSAlgorithm>(settings);
    return component->GetStatus();
  });
  if (fStatus.IsError()) return nullptr;
  fpLast = component->GetLink();
  return component;
}

void FSFactory::Cancel() {
  fStatus = MCFeature::Error(MCFeature::kCancelled);
  if (const auto last = fpLast.lock()) (*last)->Stop();
}
