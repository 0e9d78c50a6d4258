// Bins of a continuous variable: B categories cut at B - 1 ascending points.
//
// A value equal to a cutpoint belongs to the lower bin: bins are (c[i-1], c[i]], the first holds
// everything up to c[0] and the last everything above c[B-2]. Values outside the range that the
// bins were made for fall into the first or the last bin.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

#include "naivebayes/encoders/INBEncoder.h"
#include "naivebayes/encoders/NBBinGrid.h"

class NBayesInputBase;

class NBBinningEncoder : public INBEncoder {
 public:
  // Equal widths: cutpoint i is min + i * (max - min) / bins, i = 1 .. bins - 1.
  NBBinningEncoder(double min, double max, int bins);
  explicit NBBinningEncoder(const std::vector<double>& cutpoints);

  // The bin of a value, -1 when it is missing. An encoder without cutpoints answers 1 for values
  // not below 0 and 0 for the others; that is kept on purpose.
  double Encode(double value) const;

  // Encode for a whole column.
  void EncodeColumn(const double* values, std::size_t cases, std::int32_t* codes) const;

  // A copy in which the bins without a count cannot be reached: cutpoints move, categories keep
  // their numbers. Values of empty leading (trailing) bins fall into the first (last) bin with
  // counts, those of empty bins between two others are shared out at the midpoint of the gap. The
  // copy is unchanged when every bin, or fewer than two, have counts.
  std::unique_ptr<NBBinningEncoder> CreateRebinned(const NBayesInputBase* counts) const;

  const std::vector<double>& GetBinningCutpoints() const { return fvCutpoints; }

  EncoderType GetEncoderType() const override { return kBinning; }
  int GetNumberOfCategories() const override { return fNBins; }
  std::unique_ptr<INBEncoder> Clone() const override;
  int WriteObject(std::fstream& os) const override;
  int ReadObject(std::fstream& is) override;
  void WriteObjectXML(std::ostream& os, int indent) const override;
  void ReadObjectXML(std::ifstream& is) override;
  void Display(std::ostream& os) const override;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  std::int32_t BinOf(double value) const;

  int fNBins;
  std::vector<double> fvCutpoints;
  NBBinGrid fGrid;  // of the cutpoints
};
