// Readable dumps of the engine's parts, for debugging.
#pragma once

#include <iosfwd>

class FSMapICnt;
class FSMapIPCnt;
class FSMapIStat;
class FSMapPiCnt;
class FSPredictorState;

namespace FSDisplay {

// One line "label = value"; the missing value shows as "missing".
void Value(std::ostream& out, const char* label, double value);

// The weights seen, under the name of the accumulator.
void State(std::ostream& out, const char* name, const FSPredictorState& state);

void Counts(std::ostream& out, const char* label, const FSMapICnt& counts);
void Counts(std::ostream& out, const char* label, const FSMapPiCnt& counts);
void Counts(std::ostream& out, const char* label, const FSMapIPCnt& counts);
void Groups(std::ostream& out, const char* label, const FSMapIStat& groups);

}  // namespace FSDisplay
