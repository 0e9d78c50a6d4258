// A folder for what a run may write: made before it, and gone after it where nothing was written.
#pragma once

#include <string>
#include <vector>

namespace MCHost {

class NewFolder {
 public:
  // Makes the folder and those above it that are not there. Throws HostIOError.
  explicit NewFolder(const std::string& path);
  NewFolder(const NewFolder&) = delete;
  NewFolder& operator=(const NewFolder&) = delete;
  // Removes what it has made and is empty. RemoveUnfinished() does so, too.
  ~NewFolder();

 private:
  void Remove();

  std::vector<std::string> fMade;  // the outermost first
  std::vector<int> fSlots;
};

}  // namespace MCHost
