// The scoring pass of one NAIVEBAYES run, its last one over the data: makes the saved variables,
// scores every case into them, and counts the cases by observed and predicted category.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "common/evaluation/EvaluationCounter.h"
#include "common/evaluation/ScoreCurves.h"
#include "host/cases/KOVA_Value.h"
#include "host/cases/UAPredictionWriter.h"
#include "host/cases/UAProcDataSourceIter.h"
#include "host/command/ParserMessage.h"
#include "naivebayes/model/NBScoredBlock.h"

class INBAlgorithm;
class KOVA_Variable;
class NaiveDataSourceIter;
class PRSMultiRun;
class PRSValidSpecs;
class ProcedureDataSource;
struct NBPartClassified;

class PRSMultiScoring {
 public:
  // Everything is borrowed. So many predicted probabilities are saved, those of the first
  // categories.
  PRSMultiScoring(PRSMultiRun& run, INBAlgorithm& algorithm, int nSaveDepCats);
  ~PRSMultiScoring();

  // Whether the command asks for something that a scoring pass gives.
  bool IsNeeded() const;

  // False, after a message, when it did not come to its end. Call once.
  [[nodiscard]] bool ScoringDataPass();

  // The probabilities of the classified cases of a sample, where the session wants them; null
  // without such a case.
  const MCCommon::ScoreCurves* GetCurves(bool training) const;

  // What the cases of the test sample, or of training where there is none, say of the model; none
  // unless the command asks for it, and for a sample without a case.
  std::optional<MCCommon::Evaluation> FindEvaluation();

  // What the pass has counted, of a part for those who bring parts together, and of all parts in
  // place of the pass.
  void GiveTo(NBPartClassified& classified);
  void TakeFrom(NBPartClassified& classified);

 private:
  bool CreateNewVars();
  bool CreatePredictedValue();
  bool CreateProbabilities();
  // A category of the variable as text.
  static void ConvertObsValToStr(const OBS* value, const KOVA_Variable& variable,
                                 std::string& text);
  bool ScoreCases();
  // Scores the last block of the scoring stream and writes its values.
  bool SaveVarValues(ProcDSIterator* pDataIter, const MCCommon::RecordBlock& block);
  // Counts the cases that the classification table counts, for curves and evaluation.
  void CountCases(const MCCommon::RecordBlock& block);
  void CountCase(int category, std::span<const double> probabilities, std::size_t i, double weight);

  PRSMultiRun& fRun;
  const PRSValidSpecs& fSpecs;
  ProcedureDataSource& fSource;
  INBAlgorithm& fAlgorithm;
  int fNSaveDepCats;
  std::unique_ptr<UAPredictionWriter> fpWriter;  // has the texts that the stream may yet store
  std::unique_ptr<NaiveDataSourceIter> fpScoreRecIter;
  int fPredValVar = -1;
  std::vector<int> fPredProbVars;
  std::vector<KOVA_Value> fDependValues;  // by category
  NBScoredBlock fScored;
  std::vector<char> fTrainingMarks;  // of the cases of a block
  bool fbCurvesWanted;
  bool fbEvaluated;
  std::optional<MCCommon::EvaluationCounter> fEvaluation;
  std::optional<MCCommon::ScoreCurves> fCurves[2];  // of test and training cases
  ParserMessage fParserMessages;
};
