#include "naivebayes/NaiveBayesSettings.h"

#include <ostream>

const char* NaiveBayesSettings::GetRNGName(RNGChoice choice) {
  static constexpr const char* kNames[] = {"Mersenne Twister", "Older portable RNG from KOVA",
                                           "Library RNG (not portable)", "User provided RNG"};
  return kNames[choice];
}

void NaiveBayesSettings::Display(std::ostream& os) const {
  os << "Start of NaiveBayesSettings display\n"
     << "Progress listener address = " << static_cast<const void*>(fpListener) << '\n'
     << "Number of progress reports to skip = " << fNSkippedReports << '\n'
     << "Random number generator to use = " << GetRNGName(fRNG) << '\n'
     << "Seed for random number generator = " << fSeed << '\n'
     << "Max records in memory = " << fNMaxInMemory << '\n'
     << "Number of records for simulated data = " << fNSimulated << '\n'
     << "End of NaiveBayesSettings display\n";
}
