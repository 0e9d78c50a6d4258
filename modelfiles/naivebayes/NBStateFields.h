// Kinds of fields that only the Naive Bayes engine has: numbers that writing refuses where reading
// would, and estimates.
#pragma once

#include <algorithm>
#include <cmath>

#include "common/state/IOException.h"
#include "common/state/StateFields.h"

namespace NBState {

// A number; writing throws IOException for one that is not finite.
template <class Archive, class Value>
void Finite(Archive& archive, Value& value) {
  if constexpr (!Archive::kReading) {
    if (!std::isfinite(value)) throw MCNaive::IOException("a number that is not finite");
  }
  archive.Double(value);
}

template <class Archive, class List>
void FiniteList(Archive& archive, List& list) {
  archive.Size(list, 8);
  for (auto& value : list) Finite(archive, value);
}

// A sum of weights.
template <class Archive, class Value>
void Weight(Archive& archive, Value& weight) {
  Finite(archive, weight);
  archive.Check(weight >= 0);
}

template <class Archive, class List>
void Weights(Archive& archive, List& list) {
  FiniteList(archive, list);
  archive.Check(std::all_of(list.begin(), list.end(), [](double w) { return w >= 0; }));
}

// Estimates of probabilities, which rounding may bring a little above 1.
template <class Archive, class List>
void Probabilities(Archive& archive, List& list) {
  FiniteList(archive, list);
  archive.Check(
      std::all_of(list.begin(), list.end(), [](double p) { return p >= 0 && p <= 1 + 1e-6; }));
}

// A number that follows from what was read before it.
template <class Archive>
void Known(Archive& archive, int value) {
  const int known = value;
  archive.Int(value);
  archive.Check(value == known);
}

}  // namespace NBState
