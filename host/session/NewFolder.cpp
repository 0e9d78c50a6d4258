#include "host/session/NewFolder.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "host/session/HostIOError.h"
#include "host/session/Unfinished.h"

namespace MCHost {

namespace {

// Those that are to be made, the outermost first.
std::vector<std::string> MissingFolders(std::filesystem::path path) {
  std::vector<std::string> missing;
  std::error_code error;
  while (!path.empty() && !std::filesystem::exists(path, error)) {
    if (path.has_filename()) missing.insert(missing.begin(), path.string());
    if (path == path.parent_path()) break;
    path = path.parent_path();
  }
  return missing;
}

}  // namespace

NewFolder::NewFolder(const std::string& path) : fMade(MissingFolders(path)) {
  for (const std::string& folder : fMade) fSlots.push_back(RegisterUnfinished(folder.c_str()));
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (!error) return;
  Remove();
  throw HostIOError(path, "", "cannot be made: " + error.message());
}

NewFolder::~NewFolder() { Remove(); }

void NewFolder::Remove() {
  // Known until they are gone: the program may end in between.
  for (auto folder = fMade.rbegin(); folder != fMade.rend(); ++folder) rmdir(folder->c_str());
  for (const int slot : fSlots) ForgetUnfinished(slot);
}

}  // namespace MCHost
