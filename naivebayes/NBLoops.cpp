#include "naivebayes/NBLoops.h"

#include <cstring>

#include "common/CountInTurn.h"
#include "common/InstructionSet.h"
#include "common/MissingValue.h"
#include "naivebayes/encoders/NBCategoryCode.h"

namespace {

#define INSTRUCTION_SET_LOOPS "naivebayes/NBLoopBodies.inc"
#include "common/EachInstructionSet.inc"
#undef INSTRUCTION_SET_LOOPS

}  // namespace

const NBLoops& NBLoops::InUse() {
  return OfInstructionSet(Baseline::kLoops, AVX2::kLoops, AVX512::kLoops);
}
