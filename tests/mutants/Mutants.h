#ifndef MUTANTS_H
#define MUTANTS_H

#include <cstdlib>

// Says which of the changes that mutants.py has planted is in force: the one that the environment
// variable MUTANT numbers, or none.
namespace mutants {
inline const int kChosen = [] {
  const char* number = std::getenv("MUTANT");
  return number ? std::atoi(number) : 0;
}();
inline bool Is(int number) { return kChosen == number; }
}  // namespace mutants

#endif
