#include "backend/predselect/drivers/PRSFiles.h"

#include <sstream>

#include "common/WholeText.h"
#include "host/output/BpError.h"
#include "host/session/HostIOError.h"
#include "host/session/ISession.h"
#include "host/session/OutputFile.h"
#include "host/session/SessionScope.h"
#include "modelfiles/ComponentFile.h"

namespace {

// Writes a state file by name: `write` is given the path and the form, and says what went wrong.
bool SaveState(const std::function<std::string(const std::string&, const StateWriting&)>& write) {
  const std::string target = MCHost::CurrentSession().StatePath();
  const StateWriting how{IsXMLStateName(target), MCHost::CurrentSession().StateKey()};
  try {
    MCHost::WriteWhole(target, [&](const std::string& path) { return write(path, how); });
    MCHost::CurrentSession().ReportFile(target);
    return true;
  } catch (const MCHost::HostIOError& error) {
    PRSFileError(error);
    return false;
  }
}

}  // namespace

bool PRSCommit(MCHost::OutputFile& file, const std::string& text) {
  try {
    file.Write(text);
    file.Commit();
    MCHost::CurrentSession().ReportFile(file.Target());
    return true;
  } catch (const MCHost::HostIOError& error) {
    PRSFileError(error);
    return false;
  }
}

void PRSFileError(const MCHost::HostIOError& error) {
  MCHost::RaiseMessage(MCHost::OutputMessage::kError, "File cannot be written: ^1", {error.what()});
}

bool PRSIsStateWanted() { return !MCHost::CurrentSession().StatePath().empty(); }

bool PRSAreResultsWanted() { return !MCHost::CurrentSession().ResultsPrefix().empty(); }

bool PRSIsModelWanted() { return MCHost::CurrentSession().IsModelWanted(); }

bool PRSSaveState(const IFSAlgorithm& component, const StateDictionary& dictionary) {
  return SaveState([&](const std::string& path, const StateWriting& how) {
    return WriteComponentFile(path, how, component, &dictionary);
  });
}

bool PRSSaveState(const INBAlgorithm& component) {
  return SaveState([&](const std::string& path, const StateWriting& how) {
    return WriteComponentFile(path, how, component);
  });
}

bool PRSSaveState(const NBPartModel& part) {
  return SaveState([&](const std::string& path, const StateWriting& how) {
    return WriteComponentFile(path, how, part);
  });
}

bool PRSWriteResult(const std::string& name, const std::function<bool(std::ostream&)>& write) {
  std::ostringstream document;
  const bool isThere = write(document);
  const std::string text = MCCommon::WholeText(document);
  if (!isThere) return true;
  try {
    MCHost::OutputFile file(MCHost::CurrentSession().ResultsPrefix() + name);
    return PRSCommit(file, text);
  } catch (const MCHost::HostIOError& error) {
    PRSFileError(error);
    return false;
  }
}
