#include "common/InstructionSet.h"

#include <atomic>
#include <cstdlib>

namespace MCCommon {

namespace {

InstructionSet Chosen() {
  const std::vector<InstructionSet> here = InstructionSetsHere();
  const char* wanted = std::getenv("PREDSELECT_INSTRUCTIONS");
  for (const InstructionSet set : here) {
    if (wanted != nullptr && NameOf(set) == wanted) return set;
  }
  return here.back();
}

std::atomic<InstructionSet>& InUse() {
  static std::atomic<InstructionSet> inUse{Chosen()};
  return inUse;
}

}  // namespace

std::string_view NameOf(InstructionSet set) {
  switch (set) {
    case InstructionSet::kAVX512:
      return "avx512";
    case InstructionSet::kAVX2:
      return "avx2";
    default:
      return "baseline";
  }
}

std::vector<InstructionSet> InstructionSetsHere() {
  std::vector<InstructionSet> here{InstructionSet::kBaseline};
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2")) here.push_back(InstructionSet::kAVX2);
  if (here.size() == 2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
      __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl")) {
    here.push_back(InstructionSet::kAVX512);
  }
#endif
  return here;
}

InstructionSet InstructionSetInUse() { return InUse().load(std::memory_order_relaxed); }

void UseInstructionSet(InstructionSet set) { InUse() = set; }

}  // namespace MCCommon
