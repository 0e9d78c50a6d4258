// State files: a saved component in, a component out.
#pragma once

#include <string>

#include "modelfiles/ComponentFile.h"

namespace PredSelect {

// Either form of either component. Throws MCHost::HostIOError, naming the file and what is wrong
// with it; with a key (StateKey.h) also for a file that was not signed with it.
ComponentFile LoadState(const std::string& path, const std::string& key = {});

// XML where the name ends in ".xml", else binary; signed with the key, if there is one. The file
// appears whole or not at all. Throws MCHost::HostIOError.
void SaveState(const ComponentFile& state, const std::string& path, const std::string& key = {});

}  // namespace PredSelect
