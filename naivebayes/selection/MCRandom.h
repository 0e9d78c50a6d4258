// The random numbers that simulated records are drawn with.
#pragma once

#include <iosfwd>
#include <memory>
#include <random>

#include "common/MCRandom.h"

namespace MCNaiveBayes {

class MCRandom {
 public:
  // A user generator, when given, is drawn from and stays the caller's. Otherwise: portable and
  // twister is MT19937 on the open interval (0,1); portable alone is the older multiplicative
  // generator x' = 397204094 x mod (2^31 - 1), whose seed 0 gives 0 for ever; neither is the C
  // library's rand(), which the constructor does not seed.
  MCRandom(unsigned long seed, bool portable, bool twister, MCCommon::MCRandom* user);

  // The next draw, between 0 and 1.
  double GetRandom();

  // Starts the sequence anew; seeds the C library's generator when that is the one in use.
  void SetSeed(unsigned long seed);
  void SetUsePortable(bool portable) { fbPortable = portable; }
  bool GetUsePortable() const { return fbPortable; }
  bool GetUseTwister() const { return fpTwister != nullptr; }
  MCCommon::MCRandom* GetUserRNG() const { return fpUser; }

  // As INBUserMissing says: the sequence goes on where it was saved. The user generator is not part
  // of the state. REQUIRES, to read: not the C library's generator in use, whose place is unknown.
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);

  unsigned long fState;
  bool fbPortable;
  std::unique_ptr<std::mt19937> fpTwister;
  MCCommon::MCRandom* fpUser;
};

}  // namespace MCNaiveBayes
