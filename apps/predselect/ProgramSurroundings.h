// What the operations are told of this program.
#pragma once

#include "operations/Surroundings.h"

namespace PredSelectApp {

class ProgressLine;

// Temporary files where the environment says, Ctrl-C, and the progress line, which is borrowed.
PredSelect::Surroundings ProgramSurroundings(ProgressLine& progress);

}  // namespace PredSelectApp
