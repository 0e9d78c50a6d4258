// What the operations are told of this program.
#pragma once

#include "operations/Surroundings.h"

namespace PredSelectApp {

struct Options;
class ProgressLine;

// Temporary files where the environment says, threads, Ctrl-C, and the progress line, which is
// borrowed.
PredSelect::Surroundings ProgramSurroundings(const Options& options, ProgressLine& progress);

// The threads that may be at work at once: those asked for, else one for each processor.
int ThreadsOf(const Options& options);

}  // namespace PredSelectApp
