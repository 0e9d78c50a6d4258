// Values that an analyst declared missing for one variable.
//
// A definition belongs to one encoder. It says nothing of the system-missing value, which is
// missing everywhere without being declared.
#pragma once

#include <iosfwd>
#include <memory>

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

  virtual void Display(std::ostream& os) const = 0;
};
