// State files as the program's commands open them.
#pragma once

#include <string>

#include "modelfiles/ComponentFile.h"

namespace PredSelectApp {

// Throws MCHost::HostIOError, naming the file and what is wrong with it.
ComponentFile OpenState(const std::string& path);

}  // namespace PredSelectApp
