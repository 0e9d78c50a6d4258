// A closed interval of numbers, such as a range of user-missing values.
#pragma once

#include <iosfwd>
#include <limits>

class NBNumericInterval {
 public:
  // All numbers.
  NBNumericInterval() = default;
  NBNumericInterval(double left, double right) : fLeft(left), fRight(right) {}

  // (lowest double, x] when lowerHalf, otherwise [x, highest double].
  NBNumericInterval(double x, bool lowerHalf);

  double GetLeftEnd() const { return fLeft; }
  double GetRightEnd() const { return fRight; }

  // Each stores the end and says whether the interval is still well formed: left not above right.
  bool SetLeftEnd(double x);
  bool SetRightEnd(double x);

  // False for NaN, and for every value when the interval is not well formed.
  bool Contains(double value) const { return fLeft <= value && value <= fRight; }

  bool operator==(const NBNumericInterval&) const = default;
  void Display(std::ostream& os) const;

  // As INBUserMissing says.
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

 private:
  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);

  double fLeft = std::numeric_limits<double>::lowest();
  double fRight = std::numeric_limits<double>::max();
};
