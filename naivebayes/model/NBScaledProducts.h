// For each of a run of records and each target category k, Pi(k) times the factors P(x_j|k) of the
// inputs multiplied in so far.
//
// Exponents are carried apart where products grow too small, per record and category; since scaling
// by powers of two changes no mantissa, results are those of plain products wherever these do not
// underflow, and right with any number of inputs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "naivebayes/store/NBCodes.h"

class NBayesInput;
class NBayesInputBase;

class NBScaledProducts {
 public:
  // A mantissa that has become less than kScaleBelow is scaled up by kScale = 2^kStep, once a bound
  // says that one may be less than kLookBelow.
  static constexpr int kStep = 200;
  static constexpr double kScale = 0x1p200, kScaleBelow = 0x1p-200, kLookBelow = 0x1p-400;

  // The priors alone, for so many records.
  void Reset(const std::vector<double>& priors, std::size_t records);

  // Leaves a category out of a record's products: 0 stands in its place.
  void Exclude(std::size_t record, std::int32_t category) {
    fvMantissas[record * fNCategories + category] = 0;
  }

  // Multiplies one input in; a record with a negative code has no factor.
  // REQUIRES: one code per record, within the input's table.
  void Multiply(const NBayesInputBase& input, NBCodes codes);
  // The same for several inputs, one after the other; the codes of each stand behind those of the
  // one before.
  void Multiply(std::span<const NBayesInput> inputs, const std::int32_t* codes);
  // So many of them are multiplied in at once, with the products in registers.
  static constexpr std::size_t kTogether = 4;

  // Makes Values and Exponent follow the products. To be called after the last Multiply.
  void Align();

  // The products of one record are Values(record)[k] * 2^Exponent(record).
  const double* Values(std::size_t record) const {
    return (fvAligned.empty() ? fvMantissas : fvAligned).data() + record * fNCategories;
  }
  // The logarithm of one of a record's products, however small it is; by the product alone, however
  // often it was scaled.
  double LogOf(std::size_t record, std::size_t category) const;
  // Whether every exponent is 0.
  bool IsPlain() const { return fvOffsets.empty(); }
  int Exponent(std::size_t record) const { return fvOffsets.empty() ? 0 : fvOffsets[record]; }

  // The products of a single record as plain doubles, from the priors that `products` holds; false
  // when they may grow too small for that, and then they are of no use.
  static bool MultiplyPlain(const std::vector<NBayesInput>& inputs, const std::int32_t* codes,
                            std::vector<double>& products);

  std::size_t Records() const { return fNRecords; }
  std::size_t Categories() const { return fNCategories; }
  // The sum over target categories of the record's values, without its exponent.
  double SumOf(std::size_t record) const;

 private:
  // Whether no product of kTogether inputs can become too small on the way.
  bool HasRoomFor(std::span<const NBayesInput> inputs) const;
  void ScaleUp();

  std::size_t fNRecords = 0;
  std::size_t fNCategories = 0;
  double fLeast = 1;  // a bound from below of all mantissas
  std::vector<double> fvMantissas;
  std::vector<std::int32_t> fvScalings;  // how often a mantissa was scaled up; empty when none was
  std::vector<double> fvAligned;         // one exponent for a whole record; empty likewise
  std::vector<std::int32_t> fvOffsets;
};
