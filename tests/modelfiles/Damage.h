// Damages state files at random and looks at what reading makes of them.
#pragma once

#include <cstdint>
#include <random>
#include <string>

enum class Seal {
  kBroken,  // the file is left as it was damaged
  kAnew     // its content was damaged, and given a checksum of its own
};

struct DamageReport {
  int fTrials = 0;
  int fSame = 0;            // read, with the numbers that it had
  int fOther = 0;           // read, with other numbers
  int fUnusable = 0;        // read, but not the same when it is saved and read again
  double fMostSeconds = 0;  // of processor time that reading one took

  void operator+=(const DamageReport& other);
};

// What happened to `trials` copies of the file, damaged one by one: bits and bytes changed, digits
// exchanged, ranges deleted, doubled, swapped, emptied or put in, ends cut off. `path` is written
// to. REQUIRES: `file` is a state file in an envelope.
DamageReport DamageState(const std::string& file, const std::string& path, int trials, Seal seal,
                         std::mt19937_64& draw);
