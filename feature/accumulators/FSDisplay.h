// Readable dumps of the engine's parts, for debugging.
#pragma once

#include <ostream>

class FSPredictorState;

namespace FSDisplay {

// One line "label = value"; the missing value shows as "missing".
void Value(std::ostream& out, const char* label, double value);

// The weights seen, under the name of the accumulator.
void State(std::ostream& out, const char* name, const FSPredictorState& state);

// The entries of a map, under what they are.
template <class Map>
void Entries(std::ostream& out, const char* label, const Map& map) {
  out << "  " << label << ":\n";
  map.Display(out);
}

}  // namespace FSDisplay
