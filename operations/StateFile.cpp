#include "operations/StateFile.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include "host/session/HostIOError.h"
#include "host/session/OutputFile.h"

namespace PredSelect {

namespace {

// Where another kind of file was taken for a state.
std::string Remedy(const std::string& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return "";
  std::ifstream file(path, std::ios::binary);
  std::string start(4096, '\0');
  file.read(start.data(), static_cast<std::streamsize>(start.size()));
  start.resize(static_cast<std::size_t>(file.gcount()));
  if (start.find("<PMML") != std::string::npos) {
    return "; it is PMML, which is for other programs: give what --save-model or --save-state has "
           "written of the model";
  }
  const bool isState = start.empty() || start.find("Algorithm") != std::string::npos ||
                       start.find("Ranges") != std::string::npos ||
                       start.find("NBPartModel") != std::string::npos;
  return isState ? "" : "; --save-model and --save-state write such files";
}

}  // namespace

ComponentFile LoadState(const std::string& path, const std::string& key) {
  ComponentFile state;
  std::string place;
  const std::string trouble = ReadComponentFile(path, state, &place, key);
  if (!trouble.empty()) {
    throw MCHost::HostIOError(path, place, "cannot be used as a state: " + trouble + Remedy(path));
  }
  return state;
}

void SaveState(const ComponentFile& state, const std::string& path, const std::string& key) {
  MCHost::WriteWhole(path, [&](const std::string& temporary) {
    return WriteComponentFile(temporary, {IsXMLStateName(path), key}, state);
  });
}

}  // namespace PredSelect
