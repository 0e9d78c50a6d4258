// How many threads read files.
#pragma once

namespace MCHost {

// So many decode at once, and so many fetch, from now on in the whole process; nothing that is read
// depends on it. REQUIRES: at least 1.
void SetReadingThreads(int threads);

}  // namespace MCHost
