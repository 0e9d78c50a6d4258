// The names of files and folders that are gone when the run ends without having finished them.
//
// Whoever makes one registers it for the time being, so that a program that is ended by a signal
// leaves nothing behind.
#pragma once

namespace MCHost {

// Takes note of a path, whose text stays where it is until it is forgotten. Returns its slot; -1
// where there is none left: the owner removes it all the same.
int RegisterUnfinished(const char* path);

// REQUIRES: a slot of RegisterUnfinished.
void ForgetUnfinished(int slot);

// Removes every file that is registered, and then every folder that is empty, the last one first.
// For a program that is about to end without unwinding: may be called from a signal handler or an
// assertion handler, on any thread.
void RemoveUnfinished() noexcept;

}  // namespace MCHost
