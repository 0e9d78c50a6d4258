// The training cases of one NAIVEBAYES run where they lie in parts: brings the engine's questions
// to them. What went wrong is kept for the run to say.
#pragma once

#include <string>
#include <vector>

#include "backend/predselect/drivers/PRSParts.h"
#include "naivebayes/parts/INBParts.h"

class INBAlgorithm;
class PRSMultiRun;
struct NBPartClassified;

class PRSMultiParts : public INBParts {
 public:
  // The run is borrowed. `screened`: what the parts must know of screening.
  PRSMultiParts(PRSMultiRun& run, std::vector<int> screened);

  bool Count(NBPartCounts& counts) override;
  bool Ask(const NBPartQuestion& question, NBPartSums& sums) override;
  // How the model classifies the cases. False where the pass failed or was cancelled.
  [[nodiscard]] bool Classify(const INBAlgorithm& model, NBPartClassified& classified);

  // False, with a message, after a failure or a stop.
  bool IsPassComplete();

 private:
  template <class T>
  bool Pass(const PartRequest& request, Piece::Kind kind, T& answer);

  PRSMultiRun& fRun;
  PRSParts fParts;
  std::vector<int> fScreened;
  std::string fFailure;
};
