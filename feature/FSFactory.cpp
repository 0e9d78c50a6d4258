#include "feature/FSFactory.h"

#include "feature/FSAlgorithm.h"

std::unique_ptr<IFSAlgorithm> FSFactory::CreateFSAlgorithm(FSSettings* settings) {
  if (fStatus.GetErrorCode() == MCFeature::kCancelled) return nullptr;
  auto component = std::make_unique<FSAlgorithm>(settings);
  fStatus = component->GetStatus();
  if (fStatus.IsError()) return nullptr;
  return component;
}
