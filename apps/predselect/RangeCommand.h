// The range verb: what a part of the data knows of ranges and categories.
#pragma once

namespace PredSelectApp {

struct Options;

int FindRanges(const Options& options);

}  // namespace PredSelectApp
