// Counts of several parts of the data, brought together.
#pragma once

#include <cstdint>
#include <map>
#include <string>

struct ComponentFile;

namespace PredSelect {

// The states of one merge, so that no data are counted twice.
class MergedCounts {
 public:
  // Throws RequestError (allow-equal), naming both, for the very counts of a state that was noted
  // before: the same file, a copy, or its other form.
  void Note(const ComponentFile& state, const std::string& name);

 private:
  std::map<std::uint64_t, std::string> fNames;  // by digest
};

// Adds what `from` has counted to `into`, as if one run had counted both. `name` is what the
// refusal calls `from`. Throws RequestError (level, where that helps) for states that do not fit
// together; `into` is then as it was.
void MergeStates(ComponentFile& into, const ComponentFile& from, const std::string& name);

}  // namespace PredSelect
