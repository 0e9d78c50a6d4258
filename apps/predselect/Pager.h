// Long pages on a terminal, a screenful at a time.
#pragma once

#include <string>

namespace PredSelectApp {

// Gives a page that is longer than the terminal on standard output to the pager: the one that PAGER
// says, else less where it is installed. False where the page fits, the height is not known, or
// there is no pager: then nothing was shown. Whoever leaves the pager early has seen enough.
bool ShowInPager(const std::string& page);

}  // namespace PredSelectApp
