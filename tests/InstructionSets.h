// Calls a piece of a test once under each set of instructions that the machine has.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "common/InstructionSet.h"

namespace MCTest {

template <class Call>
void ForEachInstructionSet(Call call) {
  const MCCommon::InstructionSet before = MCCommon::InstructionSetInUse();
  for (const MCCommon::InstructionSet set : MCCommon::InstructionSetsHere()) {
    const testing::ScopedTrace trace(__FILE__, __LINE__, std::string(NameOf(set)));
    MCCommon::UseInstructionSet(set);
    call();
  }
  MCCommon::UseInstructionSet(before);
}

}  // namespace MCTest
