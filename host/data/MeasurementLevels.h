// The one rule by which a variable without a measurement level gets it.
//
// Strings are nominal. Numbers are nominal when all their valid values are whole and fewer than
// kScaleDistinctValues of them are distinct, otherwise scale. Missing values, user-missing ones
// among them, are not valid and say nothing about the level; a variable without valid values is
// nominal.
#pragma once

namespace MCHost {

class ITable;

// So many distinct whole values make a numeric variable scale.
inline constexpr int kScaleDistinctValues = 24;

// Sets the level of every variable whose level is unknown; the others keep theirs. Reads only the
// numeric columns in question: their first cases, then once all cases of those that are not known
// to be scale by then. Throws HostIOError.
void SettleMeasurementLevels(ITable& table);

}  // namespace MCHost
