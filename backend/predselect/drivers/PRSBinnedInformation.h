// The mutual information of predictors where they or the target are scale: from the joint counts of
// categories and bins, taken in a pass of its own over the same cases, as many bins as the Naive
// Bayes engine makes unless told otherwise.
//
// The first pass cannot count bins, since it is the one that finds the range; and it need not be
// burdened with what most commands do not ask for.
#pragma once

#include <string>
#include <vector>

#include "backend/predselect/PRSFindings.h"
#include "backend/predselect/drivers/PRSEffects.h"
#include "feature/MCStatus.h"

class FSSettings;
class IFSAlgorithm;
class PRSBinnedCases;
class PRSValidSpecs;
class UAInputAdapter;
class UAProcDataSourceIter;

class PRSBinnedInformation {
 public:
  // All borrowed; the stream has come to its end. Without one the cases lie in parts, which are
  // asked for the counts.
  PRSBinnedInformation(const PRSValidSpecs& specs, const IFSAlgorithm& algorithm,
                       const UAInputAdapter& adapter, UAProcDataSourceIter* source);

  // Fills in what the effects lack, without a pass when that is nothing. An error when the pass was
  // cancelled; a failure to read is the stream's, and of parts thrown as HostIOError. The joint
  // counts themselves go to `profiles` unless it is null.
  [[nodiscard]] MCFeature::MCStatus AddTo(std::vector<PRSEffect>& effects,
                                          std::vector<PRSBinnedProfile>* profiles = nullptr) const;

  // What a part counts of these predictors, as a saved component.
  [[nodiscard]] MCFeature::MCStatus CountPart(const std::vector<int>& predictors,
                                              std::string& component) const;

  // The bins of a variable of the data; none of a categorical one.
  PRSBins BinsOf(int kovaVar, bool categorical) const;

 private:
  FSSettings SettingsFor(const std::vector<int>& predictors) const;
  MCFeature::MCStatus Count(const std::vector<int>& predictors, IFSAlgorithm& counts) const;
  MCFeature::MCStatus CountInParts(const std::vector<int>& predictors, IFSAlgorithm& counts) const;
  void AddColumn(PRSBinnedCases& cases, int kovaVar, bool categorical) const;

  const PRSValidSpecs& fSpecs;
  const IFSAlgorithm& fAlgorithm;
  const UAInputAdapter& fAdapter;
  UAProcDataSourceIter* fpSource;
};
