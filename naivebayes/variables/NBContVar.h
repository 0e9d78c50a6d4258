// A continuous variable, binned by its encoder: equal widths between minimum and maximum, or the
// caller's own cutpoints.
//
// Training may move the encoder's cutpoints (see NBBinningEncoder::CreateRebinned); the cutpoints
// that the variable was set up with stay known, since bins are numbered by them.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "naivebayes/encoders/NBBinningEncoder.h"
#include "naivebayes/variables/INBVariable.h"

class NBContVar : public INBVariable {
 public:
  NBContVar(const std::string& name, const std::string& label, double min, double max, int bins,
            VariableRole role);
  // The range is that of the cutpoints.
  NBContVar(const std::string& name, const std::string& label, const std::vector<double>& cutpoints,
            VariableRole role);
  NBContVar(const NBContVar& other);

  // Each makes a new encoder, which takes over user-missing values and labels of the old one.
  void SetupEncoder(int bins);
  void SetupEncoder(const std::vector<double>& cutpoints);
  // Puts a re-binned encoder in place; the cutpoints of the set-up stay known.
  void ReplaceEncoder(std::unique_ptr<NBBinningEncoder> encoder);
  // Removes the encoder and, when asked, forgets the range as well.
  void ClearEncoder(bool forgetRange);

  void SetMinMax(double min, double max);
  void SetNBins(int bins) { fNBins = bins; }
  double GetMin() const { return fMin; }
  double GetMax() const { return fMax; }
  int GetNBins() const { return fNBins; }
  const std::vector<double>& GetSetupCutpoints() const { return fvSetupCutpoints; }

  MeasureLevel GetMeasureLevel() const override { return kContinuous; }
  int GetNumberOfCategories() const override;
  std::unique_ptr<INBVariable> Clone() const override;
  const NBBinningEncoder* GetEncoder() const override { return fpEncoder.get(); }
  NBBinningEncoder* GetEncoder() override { return fpEncoder.get(); }
  // Constant when minimum and maximum are equal; empty when the minimum is above the maximum, and
  // without a bin.
  VarStatus GetVarStatus() override;
  int WriteObject(std::fstream& os) const override;
  int ReadObject(std::fstream& is) override;
  void WriteObjectXML(std::ostream& os, int indent) const override;
  void ReadObjectXML(std::ifstream& is) override;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  void TakeEncoder(std::unique_ptr<NBBinningEncoder> encoder);

  double fMin;
  double fMax;
  int fNBins;
  std::vector<double> fvSetupCutpoints;
  std::unique_ptr<NBBinningEncoder> fpEncoder;
};
