#include "apps/predselect/FileUses.h"

#include <filesystem>
#include <system_error>

#include "apps/predselect/ChartFiles.h"
#include "apps/predselect/Options.h"
#include "apps/predselect/Terminal.h"
#include "apps/predselect/UsageError.h"
#include "host/arrow/DataFile.h"
#include "host/session/OutputFile.h"
#include "host/session/SameFile.h"
#include "operations/RunCommands.h"

namespace PredSelectApp {

std::vector<FileUse> FilesOf(const Options& options) {
  std::vector<FileUse> files = {
      {options.fData.fSchema, "--schema", "the schema", false},
      {options.fCommandFile, "--file", "the commands", false},
      {options.fSignKey, "--sign-key", "the key", false},
      {options.fVerifyKey, "--verify-key", "the key", false},
      {options.fResult.fFile, "--output", "the output", true},
      {options.fSaveState, options.fAction == Options::kModel ? "--save-model" : "--save-state",
       "the state", true},
      {options.fData.fUsing, "--using", "the ranges", false},
      {options.fModel.fPmml, "--pmml", "the model", true},
      {options.fExport.fFile, options.fAction == Options::kExport ? "--output" : "--export",
       "the exported model", true},
      {options.fSave.fFile, "--save-data", "the data to be saved", true, true},
      {options.fDrift, "--drift", "the drift report", true}};
  if (options.fAction != Options::kMerge && !options.fStates.empty()) {
    files.push_back({options.fStates.front(), "the state", "the state", false});
  }
  for (const std::string& file : MCHost::FilesOfData(options.fData.fFile)) {
    files.insert(files.begin(), {file, "--data", "the data", false});
  }
  std::erase_if(files, [](const FileUse& file) {
    return file.fPath.empty() ||
           (file.fbWritten && file.fPath == MCHost::OutputFile::kStandardOutput);
  });
  return files;
}

bool MayBeResultDocument(const std::string& path, const Options& options) {
  const std::string name = std::filesystem::path(path).filename().string();
  const std::size_t number = name.find_first_not_of("0123456789");
  if (number == 0 || number == std::string::npos || name[number] != '-') return false;
  return !options.fResults.empty() && MCHost::IsSameFile(path, options.fResults + "/" + name);
}

std::string UseOf(const std::string& path, const Options& options) {
  for (const FileUse& file : FilesOf(options)) {
    if (MCHost::IsSameFile(path, file.fPath)) return file.fUse;
  }
  return MayBeResultDocument(path, options) ? "a result document" : "";
}

bool MayBeSaved(const std::string& path, const SaveOptions& save) {
  std::error_code error;
  return save.fbForce || !std::filesystem::is_regular_file(path, error);
}

namespace {

void CheckTable(const std::string& option, const std::string& path, const SaveOptions& save) {
  if (path.empty()) return;
  MCHost::CheckDataFile(path);
  if (MayBeSaved(path, save)) return;
  throw UsageError(option + ": \"" + path + "\" is there already; --force replaces it.");
}

}  // namespace

void CheckOutputs(const Options& options) {
  const ResultOptions& result = options.fResult;
  if (ShowsBytes(result)) {
    throw UsageError("--format: a terminal does not show this format; -o FILE writes it.");
  }
  if (!result.fFile.empty()) MCHost::OutputFile::Check(result.fFile);
  if (!options.fModel.fPmml.empty()) MCHost::OutputFile::Check(options.fModel.fPmml);
  CheckTable("--save-data", options.fSave.fFile, options.fSave);
  CheckTable("--drift", options.fDrift, options.fSave);
  CheckChartFiles(options.fCharts);
  PredSelect::CheckOutputs({.fStatePath = options.fSaveState,
                            .fResultsFolder = options.fResults,
                            .fExport = options.fExport});
}

}  // namespace PredSelectApp
