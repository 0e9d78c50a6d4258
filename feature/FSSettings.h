// Everything that a feature selection run is told before its data pass: predictors and target,
// criteria, record layout, weights, screening thresholds, progress and cancel.
//
// Filled before the component is created and unchanged during the data pass; the component keeps a
// pointer to it, so it must outlive the component. The listener and the cancel probe are borrowed.
// A setter that is given a value out of range keeps the old value.
#pragma once

#include <iosfwd>
#include <vector>

#include "feature/MCFSCommon.h"
#include "feature/MCStatus.h"

struct FSCriterion;
class MCQueryCancel;
class ProgressListener;

class FSSettings {
 public:
  using Criteria = MCFSCommon::CriteriaSet;

  // No predictors and a categorical target; no criterion is on until the first predictor comes.
  FSSettings();
  // Predictors of one type; fewer than 1 gives none.
  FSSettings(int nPredictors, bool allCategorical, bool categoricalTarget);
  // A predictor per entry, true for categorical.
  FSSettings(const std::vector<bool>& predictorTypes, bool categoricalTarget);

  void AddPredictor(bool categorical);
  void AddPredictors(int n, bool categorical);
  // Changes the type of one predictor, or of the closed range first .. last. A set of continuous
  // predictors of which one becomes categorical keeps its type "all continuous", unlike one to
  // which a categorical predictor is added; this is on purpose.
  void SetPredictorType(int index, bool categorical);
  void SetPredictorType(int first, int last, bool categorical);
  void SetTargetType(bool categorical);

  int GetNPredictors() const { return static_cast<int>(fPredictorTypes.size()); }
  // False for an index outside the range.
  bool IsCatPredictor(int index) const;
  bool IsCatTarget() const { return fbCatTarget; }
  MCFSCommon::PredictorSetType GetTypeAllPredictors() const { return fSetType; }

  // The criteria that suit the target and the predictors.
  void SetDefaultCriteria();
  // Turns a criterion on or off. True when it now has the requested state; false when the request
  // does not suit the target and the predictors, or would leave no criterion to rank by.
  bool SetCriterion(MCFSCommon::RankCriteria criterion, bool on);
  bool GetCriterion(MCFSCommon::RankCriteria criterion) const;
  const Criteria& GetCriteria() const { return fCriteria; }
  // The one that decides which predictors are selected: the one asked for, or where that does not
  // suit the target and the predictors, the first that does. REQUIRES: a code of the enumeration.
  MCFSCommon::RankCriteria GetMainCriterion(MCFSCommon::RankCriteria asked) const;

  // Whether criteria with a p-value rank by the exact upper tail (FSTail) on the logarithmic scale,
  // then by the size of the statistic, and give that p-value; without it p is 1 - c of the
  // distribution function, which rounds to 0 below 1e-16. Set before the predictors are ranked.
  bool ArePValuesExact() const { return fbExactPValues; }
  void SetExactPValues(bool on) { fbExactPValues = on; }

  // The default number of best predictors among n (n < 1: among all): the integer part of
  // min(x, max(30, 2 sqrt(x))) + 0.5.
  int GetNBestPredictors(int n) const;

  ProgressListener* GetProgressListener() const { return fpListener; }
  void SetProgressListener(ProgressListener* listener) { fpListener = listener; }
  MCQueryCancel* GetCancelPointer() const { return fpCancel; }
  void SetCancelPointer(MCQueryCancel* cancel) { fpCancel = cancel; }
  // Records (predictors) between two progress reports; a negative value is ignored.
  int GetNSkippedRecordReports() const { return fNSkippedRecords; }
  void SetNSkippedRecordReports(int n);
  int GetNSkippedPredictorReports() const { return fNSkippedPredictors; }
  void SetNSkippedPredictorReports(int n);
  // How many threads a pass over records may use, the caller's among them; a number below 1 is
  // ignored. No result depends on it.
  int GetNThreads() const { return fNThreads; }
  void SetNThreads(int n);

  // Input of (case identifier, item, value, target) transactions instead of a record a case.
  bool GetFlagTrInput() const { return fbTransactional; }
  void SetFlagTrInput(bool transactional) { fbTransactional = transactional; }

  // Columns of the record, -1 for none. A negative target position clears it; negative positions
  // of the case identifier and the weight are ignored.
  int GetTargetPosition() const { return fTargetPosition; }
  void SetTargetPosition(int position) { fTargetPosition = position < 0 ? -1 : position; }
  int GetCaseIDPosition() const { return fCaseIDPosition; }
  void SetCaseIDPosition(int position);
  int GetWeightPosition() const { return fWeightPosition; }
  void SetWeightPosition(int position);
  MCFSCommon::WeightToFreq GetWeightToFreq() const { return fWeightToFreq; }
  void SetWeightToFreq(MCFSCommon::WeightToFreq method) { fWeightToFreq = method; }

  // Screening thresholds in percent (0 to 100), and whether each rule is applied.
  double GetMaxPctMiss() const { return 100.0 * fMaxMissing; }
  void SetMaxPctMiss(double percent) { SetPercent(fMaxMissing, percent); }
  double GetMaxPctSingle() const { return 100.0 * fMaxSingle; }
  void SetMaxPctSingle(double percent) { SetPercent(fMaxSingle, percent); }
  double GetMaxNCatAsPct() const { return 100.0 * fMaxNCat; }
  void SetMaxNCatAsPct(double percent) { SetPercent(fMaxNCat, percent); }
  double GetMaxPctCatWithOneCase() const { return 100.0 * fMaxOneCase; }
  void SetMaxPctCatWithOneCase(double percent) { SetPercent(fMaxOneCase, percent); }
  // The same thresholds as they are stored and compared, as fractions.
  double GetMaxMissFraction() const { return fMaxMissing; }
  double GetMaxSingleFraction() const { return fMaxSingle; }
  double GetMaxNCatFraction() const { return fMaxNCat; }
  double GetMaxOneCaseFraction() const { return fMaxOneCase; }
  double GetMinVariation() const { return fMinVariation; }
  void SetMinVariation(double value);
  double GetMinStddev() const { return fMinStddev; }
  void SetMinStddev(double value);

  bool IsDeleteManyMissing() const { return fbDeleteMissing; }
  void SetDeleteManyMissing(bool on) { fbDeleteMissing = on; }
  bool IsDeleteManySingle() const { return fbDeleteSingle; }
  void SetDeleteManySingle(bool on) { fbDeleteSingle = on; }
  bool IsDeleteManyCategories() const { return fbDeleteNCat; }
  void SetDeleteManyCategories(bool on) { fbDeleteNCat = on; }
  bool IsDeleteManyOneCase() const { return fbDeleteOneCase; }
  void SetDeleteManyOneCase(bool on) { fbDeleteOneCase = on; }
  bool IsDeleteSmallVariation() const { return fbDeleteVariation; }
  void SetDeleteSmallVariation(bool on) { fbDeleteVariation = on; }
  bool IsDeleteSmallStddev() const { return fbDeleteStddev; }
  void SetDeleteSmallStddev(bool on) { fbDeleteStddev = on; }

  // Whether a run under the other settings differs from one under these in anything but progress,
  // cancel and threads: what differs first, and the predictor if it is one's type.
  bool FindDifference(const FSSettings& other, MCFeature::MergeObstacle& what,
                      int& predictor) const;

  // Saved state: as for IFSPredTargetAccum. Listener, cancel probe and threads are not part of it.
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

  // Every field, for debugging.
  void Display(std::ostream& out) const;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  bool HasRulesOf(const FSSettings& other) const;
  bool IsConsistentType() const;
  bool IsConsistent() const;
  void AdjustCriteria();
  void ChangeSetType(MCFSCommon::PredictorSetType type);
  bool MayTurnOff(const FSCriterion& criterion) const;
  // How many are on of those that a command may ask for.
  static int CountChoices(const Criteria& criteria);
  static void SetPercent(double& fraction, double percent);

  std::vector<bool> fPredictorTypes;
  int fNCategorical = 0;
  MCFSCommon::PredictorSetType fSetType = MCFSCommon::kNoPredictors;
  bool fbCatTarget = true;
  Criteria fCriteria{};
  bool fbExactPValues = false;
  ProgressListener* fpListener = nullptr;
  MCQueryCancel* fpCancel = nullptr;
  int fNSkippedRecords = 99;
  int fNSkippedPredictors = 99;
  int fNThreads = 1;
  bool fbTransactional = false;
  int fTargetPosition = 0;
  int fCaseIDPosition = -1;
  int fWeightPosition = -1;
  MCFSCommon::WeightToFreq fWeightToFreq = MCFSCommon::kRound;
  double fMaxMissing = 0.70;
  bool fbDeleteMissing = true;
  double fMaxSingle = 0.95;
  bool fbDeleteSingle = true;
  double fMaxNCat = 0.90;
  bool fbDeleteNCat = true;
  double fMaxOneCase = 0.90;
  bool fbDeleteOneCase = true;
  double fMinVariation = 0.001;
  bool fbDeleteVariation = true;
  double fMinStddev = 0.0;
  bool fbDeleteStddev = true;
};
