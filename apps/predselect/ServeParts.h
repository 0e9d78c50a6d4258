// The program as a helping process of another one (--jobs): it opens some parts of the data and
// answers passes over them, from standard input to standard output, until that is closed.
#pragma once

namespace PredSelectApp {

struct Options;

int ServeParts(const Options& options);

}  // namespace PredSelectApp
