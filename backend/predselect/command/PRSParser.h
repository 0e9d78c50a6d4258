// Turns the tokens of a SELECTPRED or NAIVEBAYES command into validated specifications.
//
// The grammar checks what one parameter may be; this class adds what only the whole command and the
// data can tell: measurement levels, overlaps between lists, counts of predictors, choices that
// exclude each other or change nothing. Every failed check raises its message and ends the parse
// after the subcommand in which it was found; an option without effect is a warning.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "backend/predselect/command/PRSMessages.h"
#include "host/command/CommandDescriptor.h"
#include "host/command/CommandSpec.h"
#include "host/command/KOVA_TokenSequence.h"
#include "host/command/ParserMessage.h"
#include "host/command/VarSpecObj.h"
#include "host/data/ProcedureDataSource.h"

struct FSCriterion;
class PRSValidSpecs;
struct PRSSubset;

class PRSParser {
 public:
  // All are borrowed and must outlive the parser.
  PRSParser(KOVA_TokenSequence& tokens, PRSValidSpecs& specs, const ProcedureDataSource& source);
  PRSParser(const PRSParser&) = delete;
  PRSParser& operator=(const PRSParser&) = delete;
  ~PRSParser();

  // The whole parse, for the command that the specifications say. True when they are complete and
  // valid; otherwise messages have been raised. Switches split-file processing off, with a warning.
  // REQUIRES: a session is installed for this thread.
  [[nodiscard]] bool GetCommandSpecifications();

 private:
  // A predictor as it is handed over: its variable and whether it is categorical.
  struct Predictor {
    int fVariable;
    bool fbCategorical;
  };
  using Handler = bool (PRSParser::*)(const SubComObj&);

  void InitMembers();
  void SetCommandDescriptor();
  void CreateVarSpecs();
  bool ProcessCommandSpec(const CommandSpec& spec);
  bool ProcessSubCommands(const CommandSpec& spec);
  void TakeSessionMemory(const CommandSpec& spec);
  void FinalCleanUp();
  void DisableSplitFile();

  bool ProcessNoNameSubCom(const SubComObj& subCom);
  bool ProcessExceptSubCom(const SubComObj& subCom);
  bool ProcessScreeningSubCom(const SubComObj& subCom);
  bool ProcessUniCriteriaSubCom(const SubComObj& subCom);
  bool ProcessMultiCriteriaSubCom(const SubComObj& subCom);
  bool ProcessMissingSubCom(const SubComObj& subCom);
  bool ProcessMacrovarSubCom(const SubComObj& subCom);
  bool ProcessPrintSubCom(const SubComObj& subCom);
  bool ProcessPlotSubCom(const SubComObj& subCom);
  bool ProcessForceSubCom(const SubComObj& subCom);
  bool ProcessTrainSampSubCom(const SubComObj& subCom);
  bool ProcessSubsetSubCom(const SubComObj& subCom);
  bool ProcessValidationSubCom(const SubComObj& subCom);
  bool ProcessSaveSubCom(const SubComObj& subCom);
  bool ProcessOutFileSubCom(const SubComObj& subCom);

  void TakeWeight();
  bool TakeDependent(const ParamObj& param);
  bool TakeCandidates(const SubComObj& subCom);
  bool TakeLists(VarSpecObj& factors, const ParamObj* givenFactors, VarSpecObj& covariates,
                 const ParamObj* givenCovariates) const;
  std::vector<int> LeftOutOfAll() const;
  bool CheckDependent() const;
  bool CheckCandidates() const;
  void CollectCandidates(bool byLevel);
  void ReportIdleExcepts(const SubComObj& subCom) const;
  bool TakeSize(const SubComObj& subCom, int& size) const;
  const FSCriterion& TakeRanking(const SubComObj& subCom) const;
  void IgnoreCriterion(const FSCriterion& criterion, const char* param, const char* subCom) const;
  void ReportIdleCutOff(const SubComObj& subCom, const FSCriterion& criterion) const;
  bool IsPrintConsistent(const SubComObj& subCom) const;
  bool IsShown(const ParamObj& table) const;
  void AddPrintOptions(const ParamObj& summary);
  bool TakeMacroName(const ParamObj* param, KovaVarName& name) const;
  bool TakePredVal(const ParamObj& param);
  bool TakePredProb(const ParamObj& param);
  bool LeavesRoomBesideForced(const ParamObj& param) const;
  bool TakeBestSubset(const ParamObj& maxSize, PRSSubset& subset) const;

  bool IsCategorical(int variable) const;
  bool IsSelectionOff() const;
  bool IsScreeningOff() const;
  bool IsMixed() const;
  // Whether the criterion can rank the candidates against the dependent variable.
  bool Applies(const FSCriterion& criterion) const;
  bool HasPredictors(bool categorical) const;
  static std::vector<Predictor> Merged(const VarSpecObj& factors, const VarSpecObj& covariates);

  KOVA_TokenSequence& fTokens;
  PRSValidSpecs& fSpecs;
  const ProcedureDataSource& fSource;
  bool fbUniVariable = true;
  std::unique_ptr<CommandDescriptor> fpDescriptor;
  const CommandSpec* fpCommand = nullptr;  // while it is being processed
  ParserMessage fMessages;
  PRSMessages fOwnMessages;

  std::unique_ptr<VarSpecObj> fpWeightVar;
  std::unique_ptr<VarSpecObj> fpDependVar;
  std::unique_ptr<VarSpecObj> fpFactors;
  std::unique_ptr<VarSpecObj> fpCovariates;
  std::unique_ptr<VarSpecObj> fpExceptVars;
  std::unique_ptr<VarSpecObj> fpForceFactors;
  std::unique_ptr<VarSpecObj> fpForceCovariates;
  std::unique_ptr<VarSpecObj> fpTrainVar;

  bool fbDependCategorical = true;
  std::vector<Predictor> fPredictors;
  std::vector<Predictor> fForced;
};
