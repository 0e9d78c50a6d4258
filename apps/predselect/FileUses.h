// The files of the command line: what each is there for, and whether those that are to be written
// can be.
#pragma once

#include <string>
#include <vector>

namespace PredSelectApp {

struct Options;
struct SaveOptions;

struct FileUse {
  std::string fPath;
  const char* fOption;  // as the user knows it
  const char* fUse;     // in words
  bool fbWritten;
  bool fbTable = false;  // the data to be saved, which take the place of an input on demand
};

// Those that the options name. States that are merged are not among them: the whole may take the
// place of a part.
std::vector<FileUse> FilesOf(const Options& options);

// Whether a result document of the run may get that path.
bool MayBeResultDocument(const std::string& path, const Options& options);

// What a file is there for that nothing else may be written over; empty for any other file.
std::string UseOf(const std::string& path, const Options& options);

// Whether there is no file that a table saved there would take the place of, or that is wanted.
bool MayBeSaved(const std::string& path, const SaveOptions& save);

// Finds before the work what could not be written after it. Throws MCHost::HostIOError, and
// UsageError for a table to be saved over a file that is there, unless that is wanted.
void CheckOutputs(const Options& options);

}  // namespace PredSelectApp
