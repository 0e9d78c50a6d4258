#include "feature/accumulators/FSLoops.h"

#include <cstring>

#include "common/CountInTurn.h"
#include "common/InstructionSet.h"
#include "feature/accumulators/FSCaseBlock.h"
#include "feature/accumulators/FSScale.h"

namespace {

#define INSTRUCTION_SET_LOOPS "feature/accumulators/FSLoopBodies.inc"
#include "common/EachInstructionSet.inc"
#undef INSTRUCTION_SET_LOOPS

}  // namespace

const FSLoops& FSLoops::InUse() {
  return OfInstructionSet(Baseline::kLoops, AVX2::kLoops, AVX512::kLoops);
}
