// User-missing strings: discrete values with labels; strings have no interval.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "naivebayes/encoders/INBUserMissing.h"

class NBStringUserMissing : public INBUserMissing {
 public:
  void AddDiscreteValue(const std::string& value, const std::string& label);

  // True for a declared string, compared byte by byte.
  bool Contains(const std::string& value) const;

  const std::vector<std::string>& GetDiscreteValues() const { return fvValues; }
  // One label per discrete value; empty when none was given.
  const std::vector<std::string>& GetLabels() const { return fvLabels; }

  DataType GetDataType() const override { return kString; }
  int GetNDiscreteValues() const override { return static_cast<int>(fvValues.size()); }
  bool HasInterval() const override { return false; }
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

  std::vector<std::string> fvValues;
  std::vector<std::string> fvLabels;
};
