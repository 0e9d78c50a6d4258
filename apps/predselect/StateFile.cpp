#include "apps/predselect/StateFile.h"

#include "host/session/HostIOError.h"

namespace PredSelectApp {

ComponentFile OpenState(const std::string& path) {
  ComponentFile file;
  const std::string trouble = ReadComponentFile(path, file);
  if (!trouble.empty())
    throw MCHost::HostIOError(path, "", "cannot be used as a state: " + trouble);
  return file;
}

}  // namespace PredSelectApp
