// Values that an analyst declared missing for one variable.
//
// A definition belongs to one encoder. It says nothing of the system-missing value, which is
// missing everywhere without being declared.
#pragma once

#include <iosfwd>
#include <memory>
#include <vector>

namespace MCCommonXML {
class XMLElement;
}

class INBUserMissing {
 public:
  enum DataType { kNumeric = 0, kString = 1 };

  virtual ~INBUserMissing() = default;

  virtual DataType GetDataType() const = 0;
  virtual int GetNDiscreteValues() const = 0;
  virtual bool HasInterval() const = 0;
  virtual std::unique_ptr<INBUserMissing> Clone() const = 0;

  // True when type, discrete values (in order) and interval are the same; labels do not matter.
  virtual bool IsEqualTo(const INBUserMissing* other) const = 0;

  // The elements that a model document's data field holds for the definition: an Extension for each
  // bounded end of an interval, then a Value for each discrete value. Throws XMLError for a text or
  // number that XML cannot hold.
  virtual std::vector<std::unique_ptr<MCCommonXML::XMLElement>> ExportXML() const = 0;

  // Saved state (modelfiles/); docs/naivebayes-state.md lists the fields. WriteObject and
  // ReadObject return the bytes of the binary form. A reader that finds something else than such an
  // object throws IOException, and the object is then fit only to be destroyed.
  virtual int WriteObject(std::fstream& os) const = 0;
  virtual int ReadObject(std::fstream& is) = 0;
  virtual void WriteObjectXML(std::ostream& os, int indent) const = 0;
  virtual void ReadObjectXML(std::ifstream& is) = 0;

  virtual void Display(std::ostream& os) const = 0;
};
