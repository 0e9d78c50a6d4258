// Components of the feature selection engine in every stage, and what can be seen of them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "feature/FSFactory.h"
#include "feature/FSSettings.h"

enum class FSStage { kNew, kAccumulated, kCheckedConstant, kScreened, kRankedAll, kRankedBest };

// A component over a few dozen cases with missing values, weights as they are, categories beyond
// the small ones and, of many predictors, a constant one and one without values.
struct FinishedRun {
  // Predictors: 'c' categorical, 'n' continuous. Without a target the stages after the pass are
  // one, the check of all reasons.
  FinishedRun(const std::string& predictors, bool catTarget, bool withTarget, FSStage stage,
              std::size_t cases = 60);

  FSSettings fSettings;
  std::unique_ptr<IFSAlgorithm> fpComponent;
};

// The stages from the component's own to the last one, with the statuses they end in.
std::vector<std::int64_t> FinishRun(IFSAlgorithm& component, FSStage from);

// The dump and the result documents, without what differs between equal components: the lines of
// times and addresses, and the sign of what is not a number.
std::string DumpOf(const IFSAlgorithm& component);

// Saved state as bytes, and components made from bytes; null when they are refused.
std::string SaveBinary(const IFSAlgorithm& component);
std::string SaveXML(const IFSAlgorithm& component);
std::unique_ptr<IFSAlgorithm> RestoreBinary(const std::string& state, FSFactory& factory);
std::unique_ptr<IFSAlgorithm> RestoreXML(const std::string& state, FSFactory& factory);
