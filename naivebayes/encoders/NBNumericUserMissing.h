// User-missing numbers: discrete values with labels, and at most one interval.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "naivebayes/encoders/INBUserMissing.h"
#include "naivebayes/encoders/NBNumericInterval.h"

class NBNumericUserMissing : public INBUserMissing {
 public:
  void AddDiscreteValue(double value, const std::string& label);
  void SetInterval(const NBNumericInterval& interval);

  // True for a declared value and for a value in the interval; NaN equals nothing.
  bool Contains(double value) const;

  const std::vector<double>& GetDiscreteValues() const { return fvValues; }
  // One label per discrete value; empty when none was given.
  const std::vector<std::string>& GetLabels() const { return fvLabels; }
  // Meaningful only when HasInterval().
  const NBNumericInterval& GetInterval() const { return fInterval; }

  DataType GetDataType() const override { return kNumeric; }
  int GetNDiscreteValues() const override { return static_cast<int>(fvValues.size()); }
  bool HasInterval() const override { return fbInterval; }
  std::unique_ptr<INBUserMissing> Clone() const override;
  bool IsEqualTo(const INBUserMissing* other) const override;
  std::vector<std::unique_ptr<MCCommonXML::XMLElement>> ExportXML() const override;
  int WriteObject(std::fstream& os) const override;
  int ReadObject(std::fstream& is) override;
  void WriteObjectXML(std::ostream& os, int indent) const override;
  void ReadObjectXML(std::ifstream& is) override;
  void Display(std::ostream& os) const override;

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);

  std::vector<double> fvValues;
  std::vector<std::string> fvLabels;
  bool fbInterval = false;
  NBNumericInterval fInterval;
};
