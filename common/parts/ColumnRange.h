// What is known of one column of a table whose cases lie in parts: its dictionary, the range of its
// numbers, its categories, and how many cells have a value.
//
// A plain value. Numbers that are missing are the system-missing value.
#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <string>
#include <vector>

#include "common/MissingValue.h"

// The dictionary of a column, as plain values. Codes are those of the variable's class.
struct ColumnDictionary {
  std::string fName;
  std::string fLabel;
  int fType = 0;              // 0 for numbers, else the width of texts
  std::vector<int> fFormats;  // type, width and decimals of printing, then of writing
  int fLevel = 0;
  bool fbLevelFound = false;  // by the values; nobody has said it
  int fTime = 0;
  int fAlignment = 0;
  // Labels of values, and user-missing values.
  std::vector<double> fLabelled;
  std::vector<std::string> fLabelledTexts;
  std::vector<std::string> fLabels;  // of the numbers, then of the texts
  std::vector<double> fMissing;
  std::vector<std::string> fMissingTexts;
  bool fbMissingRange = false;
  double fMissingLow = 0.0;
  double fMissingHigh = 0.0;

  bool IsNumeric() const { return fType == 0; }
  // Whether a number is user-missing.
  bool IsMissing(double value) const;

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
};

// Lowest and highest of some numbers.
struct NumberRange {
  double fLow = MCMV::gMissingValue;
  double fHigh = MCMV::gMissingValue;

  void Add(double low, double high);

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
};

struct ColumnRange {
  // So many categories are listed at most.
  static constexpr std::size_t kMostCategories = 1'000'000;
  // So many distinct whole values make a column scale whose level nobody has said.
  static constexpr std::size_t kScaleDistinctValues = 24;

  ColumnDictionary fDictionary;
  std::int64_t fNValues = 0;  // cells that are not system-missing
  NumberRange fValid;         // of the valid numbers
  NumberRange fAll;           // with user-missing ones
  // The distinct values, user-missing ones among them, in order of their first appearance; nothing
  // unless all are there.
  bool fbListed = true;
  std::vector<double> fNumbers;
  std::vector<std::string> fTexts;
  // Of each, where it appeared first, comparable over all parts: the number of the part, and in the
  // lower kPartShift bits the place there.
  static constexpr int kPartShift = 32;
  std::vector<std::int64_t> fFirst;

  std::size_t CategoryCount() const { return fFirst.size(); }
  void Unlist();

  // Adds what another part has of the same column. Empty, or why it is no such column; nothing has
  // changed then.
  [[nodiscard]] std::string Merge(const ColumnRange& other);

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);

 private:
  std::string WhyNot(const ColumnRange& other) const;
  void MergeCategories(const ColumnRange& other);
  void SettleLevel();
};
