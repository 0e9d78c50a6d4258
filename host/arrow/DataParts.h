// Several files that are one table.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace MCHost {

struct DataPart {
  std::string fPath;
  // "name=value" of the folders that it is in, from the outermost; nothing where the value is none.
  std::vector<std::pair<std::string, std::optional<std::string>>> fKeys;
};

// The files that a path means which is a folder (those in it and below that are called as data) or
// a pattern with * ? [ ] { }, in the order of their names, numbers in them by their value. Empty
// for any other path. Throws HostIOError where there are none.
std::vector<DataPart> FindDataParts(const std::string& path,
                                    const std::vector<std::string>& extensions);

// Notes on how files were read: what all of them say is said once, all else with its file.
std::vector<std::string> JoinNotes(
    const std::vector<std::pair<std::string, std::vector<std::string>>>& notes);

// Whether a text comes before another one, digits next to each other being one number.
bool IsNaturallyBefore(const std::string& a, const std::string& b);

}  // namespace MCHost
