// How the category codes of one model's variable translate into those of another's.
#pragma once

#include <vector>

#include "naivebayes/variables/INBVariable.h"

// For each code 0 .. codes-1 of `from`, the code of the same value in `to`, whose encoder takes in
// values that it did not know, with their labels. What one declares missing and the other counted
// is a category. Codes without a value, and bins, keep their numbers.
std::vector<int> MakeCodeMap(const INBVariable& from, int codes, INBVariable& to);
