// Which instructions of the processor the engines' hot loops use. Such loops are compiled once for
// every set (common/EachInstructionSet.inc), and give the same bits in each.
#pragma once

#include <string_view>
#include <vector>

namespace MCCommon {

// In ascending order: a machine that has one has those before it.
enum class InstructionSet { kBaseline, kAVX2, kAVX512 };

// As the environment variable below has it: baseline, avx2, avx512.
std::string_view NameOf(InstructionSet set);

// Those that the machine has.
std::vector<InstructionSet> InstructionSetsHere();

// The one in use: the last that the machine has, or what the environment variable
// PREDSELECT_INSTRUCTIONS names when the loops are first asked for, if the machine has it.
InstructionSet InstructionSetInUse();

// Puts another one to use. REQUIRES: the machine has it; no engine is at work.
void UseInstructionSet(InstructionSet set);

}  // namespace MCCommon
