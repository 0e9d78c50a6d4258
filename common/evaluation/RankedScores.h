// The scores that cases of a class and all others got, and from them the area under the ROC curve:
// the probability that a case of the class scores higher than another one, ties counting half.
//
// Equal scores are kept once. Up to a number of different ones the area is exact; beyond, scores
// are rounded to steps of 1/256 of their log odds, which bounds the memory however many cases come.
// Neither the order of the cases nor their parts matter to that.
#pragma once

#include <cstddef>
#include <fstream>
#include <iosfwd>
#include <vector>

#include "common/evaluation/Evaluation.h"

namespace MCCommon {

class RankedScores {
 public:
  // Keeps so many different scores, and at least all that rounding can leave.
  explicit RankedScores(std::size_t most = kFewest);

  // A case's score, from 0 to 1. REQUIRES: weight > 0.
  void Add(double score, bool isOfClass, double weight);
  // The scores of other cases; what comes of it is settled.
  void Add(const RankedScores& other);

  // Brings equal scores together. REQUIRES: done before it is written.
  void Settle();

  bool IsRounded() const { return fbRounded; }

  struct Area {
    double fValue = MCMV::gMissingValue;  // missing unless there are cases of both kinds
    double fError = 0.0;                  // by DeLong; 0 with fewer than two cases of a kind
  };
  Area Find();

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

  // Log odds beyond it count as it.
  static constexpr int kEnd = 64;
  static constexpr int kStepsPerUnit = 256;
  static constexpr std::size_t kFewest = 2 * kEnd * kStepsPerUnit + 1;

 private:
  struct Score {
    double fScore;
    double fOfClass;
    double fOthers;
  };

  void Keep(const Score& score);
  void Merge();
  void Round();

  std::vector<Score> fScores;
  std::size_t fMost;
  std::size_t fLimit;  // scores that may gather before they are merged
  bool fbRounded = false;
};

}  // namespace MCCommon
