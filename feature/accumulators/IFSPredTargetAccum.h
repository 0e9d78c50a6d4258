// What one predictor gathers during the data pass, alone or together with the target.
//
// Six classes implement it, by the kinds of predictor and target. An accumulator is created empty,
// receives each case of the pass exactly once, has ComputeVariances() called once after the pass
// and is then only read. A case whose weight is not positive changes nothing. A categorical value
// is the case value truncated toward zero; the caller gives missing values to AddMissing.
// Operations that a class has no use for do nothing.
//
// Blocks and single cases give the same result to the last bit. The order of the virtual operations
// is part of the interface: new ones go to the end.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <vector>

#include "common/LeakCheck.h"
#include "feature/statistics/FSEffect.h"
#include "feature/statistics/FSProfile.h"
#include "feature/statistics/FSScore.h"

class FSMapICnt;
class FSRecode;
class FSSettings;
struct FSCaseBlock;

class IFSPredTargetAccum {
 public:
  virtual ~IFSPredTargetAccum() = default;

  // One case with valid predictor and target. `update` is for the interface's sake: the pair
  // classes always take the case in.
  virtual void AddCase(double predictor, double target, double weight, bool update) = 0;
  // One case whose predictor value is missing.
  virtual void AddMissing(double weight) = 0;
  // One case with a valid predictor value, where no target is defined. Without `update` the value
  // counts for the total weight and as seen, not for counts and moments.
  virtual void AddCaseOneVariable(double predictor, double weight, bool update) = 0;

  // No valid case was seen (also when no case was seen at all).
  virtual bool IsAllMissing() const = 0;
  // No two different valid values were seen.
  virtual bool IsAllConstant() const = 0;

  // The first screening reason that applies (MCFSCommon::PredictorDelReason), 0 for none.
  virtual int CheckDelete(const FSSettings* settings) const;
  // Every screening reason that applies, in the order of the rules; returns their number.
  virtual std::size_t CheckAllReasons(const FSSettings* settings,
                                      std::vector<int>& reasons) const = 0;

  // Variances and correlation, from the sums of the pass.
  virtual void ComputeVariances() = 0;

  // One score: the value of a ranking criterion (MCFSCommon::RankCriteria), two values
  // that break ties, and two that are shown besides. All missing for a number that is no criterion.
  virtual void ComputeCrit(int criterion, double& value, double& tie1, double& tie2, double& extra1,
                           double& extra2) const;
  // What is shown of a criterion: chi-square statistics give p-value, statistic and df; Cramer's V
  // and lambda themselves; F p-value, F, df1 and df2; t p-value, correlation, t and df. False, with
  // all four missing, when it shows nothing of the predictor.
  virtual bool GetOutputStats(int criterion, double& value, double& out2, double& out3,
                              double& out4) const;

  virtual bool IsCategorical() const = 0;

  // Saved state, whole; the binary operations return the bytes of it. Reading throws IOException
  // for what is not such an accumulator, which is then fit only to be destroyed.
  virtual int WriteObject(std::fstream& os) const = 0;
  virtual int ReadObject(std::fstream& is) = 0;
  virtual void WriteObjectXML(std::ostream& os, int indent) const = 0;
  virtual void ReadObjectXML(std::ifstream& is) = 0;

  // What was gathered, for debugging.
  virtual void Display(std::ostream& out) const = 0;

  // The predictor's values of a whole block, valid and missing ones: missing by MCMV::IsMissing,
  // and category -1 of a categorical predictor.
  virtual void AddBlock(const double* predictor, const FSCaseBlock& cases) = 0;

  // Takes in what another accumulator gathered in another part of the data; its categories are read
  // through the two maps. Counts are exact, moments exact but for rounding.
  // REQUIRES: the other is of the same class, and neither has had its variances computed.
  virtual void Merge(const IFSPredTargetAccum& other, const FSRecode& predictor,
                     const FSRecode& target) = 0;

  // What the wanted ranking criteria make of the predictor; the scores of the others are missing.
  virtual FSScores ComputeScores(const MCFSCommon::CriteriaSet& wanted) const = 0;

  // Weighted counts of the categories of a categorical predictor; null for a continuous one.
  virtual const FSMapICnt* GetCategories() const = 0;

  // What the rules about leaks look at; nothing in a pass without a target. Once variances are
  // computed.
  virtual MCCommon::LeakTraits GetLeakTraits() const { return {}; }
  // How strongly predictor and target go together; `ranking` chooses between the tests that serve.
  // Nothing where no target is defined.
  virtual FSEffect ComputeEffect(MCFSCommon::RankCriteria) const { return {}; }

  // Ends a pass: what its sums hold open goes into the moments and counts. Before that, or before
  // ComputeVariances, which does the same, only cases may be added.
  virtual void EndPass() {}

  // What was counted, for charts. Once variances are computed.
  virtual FSProfile GetProfile() const { return {}; }
};
