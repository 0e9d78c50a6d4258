// How many threads read files.
#pragma once

namespace MCHost {

// So many decode at once, and so many fetch, from now on in the whole process; nothing that is read
// depends on it. They are started, all of them; throws std::system_error where the system has no
// more. REQUIRES: at least 1.
void SetReadingThreads(int threads);

}  // namespace MCHost
