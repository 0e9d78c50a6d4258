// Files that a run writes beside its output: the model, the engine's state, result documents.
//
// Each appears whole or not at all, and is told to the session. False, after a message, when one
// could not be written.
#pragma once

#include <functional>
#include <iosfwd>
#include <string>

class IFSAlgorithm;
class INBAlgorithm;
struct NBPartModel;
struct StateDictionary;
namespace MCHost {
class HostIOError;
class OutputFile;
}  // namespace MCHost

// Puts the whole text into the file.
bool PRSCommit(MCHost::OutputFile& file, const std::string& text);

// The message that a file could not be written.
void PRSFileError(const MCHost::HostIOError& error);

// Whether the session asks for the engine's state, for result documents.
bool PRSIsStateWanted();
bool PRSAreResultsWanted();

// Whether the session asks for the model itself.
bool PRSIsModelWanted();

// The state, where the session wants it. REQUIRES: PRSIsStateWanted().
bool PRSSaveState(const IFSAlgorithm& component, const StateDictionary& dictionary);
bool PRSSaveState(const INBAlgorithm& component);
bool PRSSaveState(const NBPartModel& part);

// A result document of that name behind the session's prefix; `write` gives its text and says
// whether there is one. REQUIRES: PRSAreResultsWanted().
bool PRSWriteResult(const std::string& name, const std::function<bool(std::ostream&)>& write);
