// What the fuzz targets share: how they say that a law does not hold.
//
// A target is LLVMFuzzerTestOneInput() in a source of its own: it hands the bytes to the layer
// under test and states what must hold whatever they are. Linking this also makes a broken
// invariant of the program end it in a way that the fuzzer sees.
#pragma once

#include <string>

namespace PredSelectFuzz {

// Ends the program, naming the law and what broke it, unless it holds.
void Require(bool holds, const char* law, const std::string& broken = {});

// True for one input in eight, always the same ones: for what is many times as dear as the rest.
bool IsOneInEight(const std::string& input);

}  // namespace PredSelectFuzz
