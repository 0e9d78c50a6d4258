// Makes feature selection components.
#pragma once

#include <iosfwd>
#include <memory>

#include "feature/IFSAlgorithm.h"

class FSAlgorithm;

class FSFactory {
 public:
  // The component belongs to the caller; null when it could not be made or the factory was
  // cancelled, and GetStatus() says why. The settings are borrowed and must outlive the component.
  std::unique_ptr<IFSAlgorithm> CreateFSAlgorithm(FSSettings* settings);

  // A component as it was saved, in the stage in which it was saved. It owns its settings, which
  // have no progress listener and no cancel probe. Null, and the status says why: 80003 for a
  // stream not in a good state, 80004 (binary) or 80005 (XML) for one that does not hold a whole
  // component, or one that the memory does not hold.
  std::unique_ptr<IFSAlgorithm> RestoreFSAlgorithmFromBinary(std::fstream& in);
  std::unique_ptr<IFSAlgorithm> RestoreFSAlgorithmFromXML(std::ifstream& in);

  // The status of the last creation or restore.
  MCFeature::MCStatus GetStatus() const { return fStatus; }

  // Sets the status to the error 1. A cancelled factory makes nothing any more. The component made
  // last, if it is still there, is cancelled and emptied: its status is the error 1, too (one in
  // the midst of a stage ends that first). It stays its owner's to destroy.
  void Cancel();

 private:
  MCFeature::MCStatus fStatus;
  std::weak_ptr<FSAlgorithm*> fpLast;
};
