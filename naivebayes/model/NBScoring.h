// From joint values to a decision: class probabilities and the winning category.
#pragma once

#include <cstddef>
#include <span>

class NBCalibration;
class NBScaledProducts;
class NBayesOutput;

namespace NBScoring {

// The record's products divided by their sum. Their common exponent cancels.
// REQUIRES: products are aligned; out has one element per target category.
void Normalize(const NBScaledProducts& products, std::size_t record, std::span<double> out);

// The joint values of one record divided by their sum; zeros when that is 0.
void Normalize(std::span<double> values);

// The category of the largest probability. Ties go to the larger training weight among the tied
// categories, but the first of these after category 0 is never compared: when the maximum stands at
// 0, category 0 keeps the win against it. Kept on purpose.
int SelectWinner(std::span<const double> probabilities, const NBayesOutput& output);

// Normalises the record's products into `out`, calibrated, and selects the winner. Which of two
// classes is likelier a temperature does not change, so that the winner is that of before.
// REQUIRES: products are aligned; out has one element per target category.
int Decide(const NBScaledProducts& products, std::size_t record, const NBayesOutput& output,
           const NBCalibration& calibration, std::span<double> out);

}  // namespace NBScoring
