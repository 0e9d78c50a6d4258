// The session: the first of the three interfaces on which everything of the host stands. The other
// two, the table and the output sink, are reached through it.
//
// An application implements it (or uses the embedded host's own) and installs it with a
// SessionScope around each call of the procedure entry. Everything is called on that thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct CmaSys;
struct CmnGlb;
struct PRSFindings;
class INBAlgorithm;

namespace MCHost {

class IOutputSink;
class ITable;

// What the application says of itself in files that the procedures write.
struct AppParams {
  std::string fName;
  std::string fVersion;
  std::string fCopyright;
};

// What a command is about to do, once its text is understood.
struct CommandPlan {
  std::string fTarget;
  std::vector<std::string> fFactors;     // categorical predictors, before any is screened out
  std::vector<std::string> fCovariates;  // continuous ones
  std::string fModelFile;                // that it writes; empty for none
};

// How the probabilities of a model are to be calibrated: not at all, or by cases that it was not
// built on. The seed decides how training cases are divided where there are no others.
struct CalibrationWish {
  enum Method { kNone, kTemperature, kIsotonic };

  Method fMethod = kNone;
  std::uint64_t fSeed = 1;
};

class ISession {
 public:
  virtual ~ISession() = default;

  // The whole text of the current command, and where it starts in the text it was taken from
  // (line and column from 1), so that messages can point at the place the user sees.
  virtual const std::string& CommandText() const = 0;
  virtual int CommandLine() const = 0;
  virtual int CommandColumn() const = 0;

  virtual CmaSys& SystemBlock() = 0;
  virtual CmnGlb& CommonBlock() = 0;

  // The active data and the place where results go. Owned by the application.
  virtual ITable& Table() = 0;
  virtual IOutputSink& Output() = 0;

  // Gives a macro its values: `!name` in a later command expands to them.
  virtual void SetMacro(const std::string& name, const std::vector<std::string>& values) = 0;

  // The values of a macro, null for one that was never set. A session that keeps no macros need not
  // implement this.
  virtual const std::vector<std::string>* FindMacro(const std::string& name) const {
    (void)name;
    return nullptr;
  }

  virtual const AppParams& GetAppParams() const = 0;

  // A directory for temporary files, without a trailing separator.
  virtual std::string TempPath() const = 0;

  // False where the plan is all that is wanted of the command: nothing is done then, but that its
  // macros stand for all its predictors. A session that runs commands need not implement this.
  virtual bool BeginsWork(const CommandPlan& plan) {
    (void)plan;
    return true;
  }

  // True when the user asked to stop. Polled often; must be cheap.
  virtual bool IsCancelled() const = 0;

  // Memory for the cases of a command, in kilobytes. Asked by a command that needs it and states
  // none itself; 0 leaves it at the command's own default. A session that does not care need not
  // implement this.
  virtual double MemoryForCases() { return 0.0; }

  // Asked by a command that builds a model. A session that does not care need not implement this.
  virtual CalibrationWish Calibration() { return {}; }

  // How many threads a command may use, the caller's among them. A session that does not care need
  // not implement this.
  virtual int Threads() const { return 1; }

  // Where the engine's state is saved after a command's data were counted (binary, or XML where the
  // name ends in ".xml"), and how the names of its result documents begin. Empty: nothing is
  // written. A session that offers neither need not implement them.
  virtual std::string StatePath() const { return {}; }
  // The key that the state's file is signed with; empty for no signature.
  virtual std::string StateKey() const { return {}; }
  virtual std::string ResultsPrefix() const { return {}; }

  // The built model of a command that builds one, before its cases are scored: borrowed for the
  // call, and handed over only where it is wanted. False, after a message, when it could not be
  // used. A session that never wants one need not implement them.
  virtual bool IsModelWanted() const { return false; }
  virtual bool TakeModel(const INBAlgorithm& model) {
    (void)model;
    return true;
  }

  // What a file is there for that a command must not write over ("the data"). Empty: nothing. A
  // session that does not care need not implement this.
  virtual std::string UseOf(const std::string& path) const {
    (void)path;
    return {};
  }

  // A file that a procedure has written whole. A session that does not list them need not implement
  // this.
  virtual void ReportFile(const std::string& path) { (void)path; }

  // The current command's only error is a file that it could not write: all its other results are
  // there and whole, new variables among them. A session to which an error is an error need not
  // implement this.
  virtual void ReportLostFile() {}

  // What the engine of a command holds once its work is done, for an application that shows it in
  // its own way; borrowed for the call. Counting for it costs a little, and is done only where it
  // is wanted. A session that does not look need not implement either.
  virtual bool WantsFindings() const { return false; }
  virtual void TakeFindings(const PRSFindings& findings) { (void)findings; }

  // What is asked of the command where its table is a part of the data: the bytes of a request
  // (Piece.h) whose answer is all that is wanted of it, and the codes of the part's cases where the
  // request makes them. Empty: the whole command is to run. A session that does not run over parts
  // need not implement either.
  virtual std::string PartRequest() const { return {}; }
  virtual void TakePartAnswer(std::string answer, std::string codes) {
    (void)answer;
    (void)codes;
  }

  // How far a long pass has come, once in a while. For a progress display.
  virtual void ReportProgress(const std::string& text) = 0;
};

}  // namespace MCHost
