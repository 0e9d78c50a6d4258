// How predicted probabilities and observed categories go together in a sample: for each category
// the weight of its cases, and of all others, by small steps of the log odds of its probability.
// ROC and precision-recall curves, calibration and gain follow from it, to the width of a step.
//
// The probabilities of a Naive Bayes model crowd at both ends; log odds tell them apart there.
#pragma once

#include <cstddef>
#include <fstream>
#include <iosfwd>
#include <span>
#include <vector>

namespace MCCommon {

class ScoreCurves {
 public:
  // Of a target with more categories the first ones have curves.
  static constexpr int kMostCategories = 24;
  // Steps go from -kRange to kRange; what is beyond falls into the last ones.
  static constexpr int kRange = 40;
  static constexpr int kStepsPerUnit = 25;
  static constexpr int kNSteps = 2 * kRange * kStepsPerUnit + 1;

  struct Step {
    double fOf = 0.0;      // weight of the category's cases
    double fOthers = 0.0;  // weight of the other cases
    double fSum = 0.0;     // of weight times probability
  };

  explicit ScoreCurves(int nCategories = 0);

  // A case of a category with its probabilities, one a category.
  void Count(int category, std::span<const double> probabilities, double weight);
  // Adds what was counted of other cases. REQUIRES: of as many categories.
  void Add(const ScoreCurves& other);

  int GetNCategories() const { return fNCategories; }
  double GetWeight() const { return fWeight; }
  // All steps of a category, the lowest probabilities first.
  std::span<const Step> StepsOf(int category) const {
    return {fSteps.data() + static_cast<std::size_t>(category) * kNSteps, kNSteps};
  }

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

 private:
  int fNCategories;
  double fWeight = 0.0;
  std::vector<Step> fSteps;
};

}  // namespace MCCommon
