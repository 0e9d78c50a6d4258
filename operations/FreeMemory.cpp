#include "operations/FreeMemory.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "operations/RequestError.h"

namespace PredSelect {

namespace {

using Bytes = std::optional<std::uint64_t>;

// Where a version of control groups keeps what.
struct GroupFiles {
  const char* fMount;
  const char* fLimits[2];  // null for none
  const char* fUsage;
  const char* fUnused;  // its line in memory.stat
};
constexpr GroupFiles kVersion1 = {"/sys/fs/cgroup/memory",
                                  {"memory.limit_in_bytes", nullptr},
                                  "memory.usage_in_bytes",
                                  "total_inactive_file"};
constexpr GroupFiles kVersion2 = {
    "/sys/fs/cgroup", {"memory.max", "memory.high"}, "memory.current", "inactive_file"};

// The number that a file begins with; nothing for "max", or for no file.
Bytes NumberIn(const std::string& path) {
  std::ifstream file(path);
  std::uint64_t number = 0;
  return file >> number ? Bytes(number) : std::nullopt;
}

// The number behind a word at the beginning of a line.
Bytes NumberBehind(const std::string& path, const std::string& word) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string first;
    std::uint64_t number = 0;
    if (words >> first >> number && first == word) return number;
  }
  return std::nullopt;
}

void Lower(Bytes& least, Bytes value) {
  if (value && (!least || *value < *least)) least = value;
}

Bytes FreeInGroup(const std::string& folder, const GroupFiles& files) {
  Bytes limit;
  for (const char* name : files.fLimits) {
    if (name != nullptr) Lower(limit, NumberIn(folder + "/" + name));
  }
  const Bytes usage = NumberIn(folder + "/" + files.fUsage);
  if (!limit || !usage) return std::nullopt;
  const std::uint64_t unused = NumberBehind(folder + "/memory.stat", files.fUnused).value_or(0);
  const std::uint64_t used = *usage - std::min(*usage, unused);
  return *limit - std::min(*limit, used);
}

// Of the group and all that it is in. In a container the path may be that of the host, and only
// the last of them be there.
Bytes FreeInGroups(const std::string& root, const std::string& path, const GroupFiles& files) {
  Bytes least;
  std::filesystem::path group(path);
  for (;;) {
    Lower(least, FreeInGroup(root + files.fMount + group.string(), files));
    if (group == group.parent_path()) return least;
    group = group.parent_path();
  }
}

bool NamesMemory(const std::string& controllers) {
  std::istringstream names(controllers);
  for (std::string name; std::getline(names, name, ',');) {
    if (name == "memory") return true;
  }
  return false;
}

}  // namespace

std::optional<std::uint64_t> FreeMemory(const std::string& root) {
  Bytes least = NumberBehind(root + "/proc/meminfo", "MemAvailable:");
  if (least) *least *= 1024;
  std::ifstream groups(root + "/proc/self/cgroup");
  for (std::string number, controllers, path; std::getline(groups, number, ':') &&
                                              std::getline(groups, controllers, ':') &&
                                              std::getline(groups, path);) {
    if (NamesMemory(controllers)) Lower(least, FreeInGroups(root, path, kVersion1));
    if (controllers.empty()) Lower(least, FreeInGroups(root, path, kVersion2));
  }
  return least;
}

double AutomaticMemory() {
  const Bytes free = FreeMemory();
  if (free) return static_cast<double>(*free / 2) / 1024.0;
  throw RequestError("memory", "the system does not say how much memory is free; give a size.");
}

}  // namespace PredSelect
