// What turns a raw value of one variable into a category code 0, 1, 2, ..., or -1 for missing.
//
// This interface is what all encoders share: their labels and their user-missing definition, which
// they own. Encoding itself is not virtual: each encoder has its own Encode, for its own kind of
// value, so that whole columns are encoded without a call per cell.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "naivebayes/encoders/INBUserMissing.h"

class INBEncoder {
 public:
  // The numbers go into saved state: do not renumber.
  enum EncoderType { kBinning = 0, kCatNum = 1, kString = 2, kRound = 3 };

  // The code of a missing or unusable value.
  static constexpr int kMissingCode = -1;

  virtual ~INBEncoder() = default;
  INBEncoder& operator=(const INBEncoder&) = delete;

  virtual EncoderType GetEncoderType() const = 0;
  virtual int GetNumberOfCategories() const = 0;

  // Labels by category code; an empty or short list leaves the rest unlabelled.
  virtual void SetValueLabels(const std::vector<std::string>& labels) { fvLabels = labels; }
  // REQUIRES: code >= 0.
  virtual void SetValueLabel(int code, const std::string& label);
  virtual const std::vector<std::string>& GetValueLabels() const { return fvLabels; }

  // Replaces the definition; null for none.
  virtual void SetUserMissingInfo(std::unique_ptr<INBUserMissing> missing);
  // Null when no value was declared missing.
  virtual const INBUserMissing* GetUserMissingInfo() const { return fpMissing.get(); }

  virtual std::unique_ptr<INBEncoder> Clone() const = 0;
  // As INBUserMissing says.
  virtual int WriteObject(std::fstream& os) const = 0;
  virtual int ReadObject(std::fstream& is) = 0;
  virtual void WriteObjectXML(std::ostream& os, int indent) const = 0;
  virtual void ReadObjectXML(std::ifstream& is) = 0;

  virtual void Display(std::ostream& os) const = 0;

 protected:
  INBEncoder() = default;
  INBEncoder(const INBEncoder& other);

  // True when the value is system-missing or declared missing.
  bool IsMissingNumber(double value) const;
  bool IsMissingString(const std::string& value) const;

  // In saved state.
  template <class Archive, class Self>
  static void LabelFields(Archive& archive, Self& self);
  template <class Archive, class Self>
  static void MissingFields(Archive& archive, Self& self);

 private:
  std::vector<std::string> fvLabels;
  std::unique_ptr<INBUserMissing> fpMissing;
};
