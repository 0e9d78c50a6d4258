// Builds the model of one NAIVEBAYES run: makes the engine, selects predictors or takes them all,
// and writes what is asked for of result document, model file and saved state.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "naivebayes/INBAlgorithm.h"
#include "naivebayes/validation/NBCrossValidation.h"

class NBPartCodes;
class NaiveDataSourceIter;
class PRSMultiParts;
struct NBPartCounts;
class PRSMultiMetaData;
class PRSMultiRun;
class PRSValidSpecs;
class ProgressListener;
namespace MCHost {
class OutputFile;
}

class PRSMultiModel {
 public:
  // Both are borrowed.
  PRSMultiModel(PRSMultiRun& run, PRSMultiMetaData& metaData);
  PRSMultiModel(const PRSMultiModel&) = delete;
  PRSMultiModel& operator=(const PRSMultiModel&) = delete;
  ~PRSMultiModel();

  // The stages, in order; each is false after a message. Opening comes before the work, so that a
  // path that cannot be written costs no time. `test` chooses the subset; null for none.
  [[nodiscard]] bool OpenModelFile();
  [[nodiscard]] bool Build(NaiveDataSourceIter& train, NaiveDataSourceIter* test);
  [[nodiscard]] bool WriteFiles();

  // The same of cases that lie in parts.
  [[nodiscard]] bool BuildInParts(PRSMultiParts& parts);
  // The same of cases that are a part of a whole, to which other parts are to be added: saves as
  // the state what it has counted of all predictors, before it goes on. False, without a message,
  // for a part without a training case.
  [[nodiscard]] bool BuildOfPart(NaiveDataSourceIter& train);
  // Whether the state is to be of that kind.
  bool IsPartSaved() const;
  // The part's side: what it counts, and its codes. An error has been said.
  [[nodiscard]] bool CountPart(NaiveDataSourceIter& train, NaiveDataSourceIter* test,
                               NBPartCounts& counts, std::unique_ptr<NBPartCodes>& codes);

  // The error of a model that no document can hold. A run goes on without its model file, and says
  // so at its end. Nothing when there is no such error.
  void ReportLostModel();

  // Null before Build.
  const INBAlgorithm* GetINBAlgorithm() const { return fpNBAlgorithm.get(); }
  INBAlgorithm* GetINBAlgorithm() { return fpNBAlgorithm.get(); }

  // Results of the selection. Predictors by position in the variable list, in order of entry,
  // forced ones first; average log-likelihoods by subset size (size 1 first); pairs of subset size
  // and criterion value, the best first (none for an exact size).
  const NBSelectionResult& GetSelection() const { return fSelection; }
  // Without runs where the command asks for none, or it could not be done.
  const NBCrossValidation& GetValidation() const { return fValidation; }
  const std::vector<int>& GetSelectPredictors() const { return fSelection.fvSelected; }
  const std::vector<double>& GetAverageLogValues() const { return fSelection.fvLogLikelihoods; }
  const std::vector<std::pair<int, double>>& GetSelectResults() const {
    return fSelection.fvResults;
  }

  // Predictors that the engine dropped, since the training cases show fewer than two of their
  // categories or bins: indices in the data, in the order of the list. None before Build.
  std::vector<int> GetDroppedInTraining() const;

  // The forced predictors that are in the model: indices in the data, in the order of the command's
  // list. One that is constant in the training cases is not. REQUIRES: the engine has run.
  std::vector<int> GetForcedInputs() const;

 private:
  bool CreateEngine();
  bool Count(const NBPartSource& source, NaiveDataSourceIter& train, NBPartCounts& counts,
             std::unique_ptr<NBPartCodes>& codes);
  void BuildOrSelect(NaiveDataSourceIter& train, NaiveDataSourceIter* test);
  // REQUIRES: the request's records are given; the rest is the command's.
  void Select(NBSelectionRequest request);
  bool ReportEngine();
  void NameDroppedInputs() const;
  void WarnOfLeaks(std::int64_t tableCases) const;
  // Why there is no cross-validation, or what it is to be taken with.
  void WarnOfValidation() const;
  bool WriteResultDocument() const;
  bool WriteModel();

  PRSMultiRun& fRun;
  PRSMultiMetaData& fMetaData;
  const PRSValidSpecs& fSpecs;
  std::unique_ptr<ProgressListener> fpProgress;
  std::unique_ptr<INBAlgorithm> fpNBAlgorithm;
  std::unique_ptr<MCHost::OutputFile> fpModelFile;
  NBSelectionResult fSelection;
  NBCrossValidation fValidation;
  std::string fResultDocument;
  std::optional<MCNaive::MCStatus> fLostModel;
};
