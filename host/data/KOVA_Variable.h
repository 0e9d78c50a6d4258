// One variable of the active data: its name and everything the dictionary knows about it.
//
// A plain value without data of its own; the table holds the cells.
#pragma once

#include <string>

#include "host/data/KOVA_MissingValues.h"
#include "host/data/KOVA_ValueLabelMap.h"

// How values are printed. Written "A8" (type 1) for strings and "F8.2" (type 5) for numbers.
struct KOVA_Format {
  enum Type { kString = 1, kNumber = 5 };

  int fType = kNumber;
  int fWidth = 8;
  int fDecimals = 2;

  bool operator==(const KOVA_Format&) const = default;

  // "F8.2", "A12".
  std::string ToString() const;
};

class KOVA_Variable {
 public:
  // Codes are part of the interface. 0 until the host has settled the level.
  enum MeasurementLevel { kUnknown = 0, kNominal = 1, kOrdinal = 2, kScale = 3 };
  // What the numbers of a numeric variable stand for, where not for themselves: days or seconds
  // since 1970-01-01 00:00, seconds since midnight, seconds.
  enum Time { kNoTime, kDate, kDateTime, kTimeOfDay, kDuration };
  enum Alignment { kLeft = 0, kRight = 1, kCenter = 2 };

  // `type` is 0 for a numeric variable, otherwise the width of a string variable in bytes.
  // Numbers start as F8.2 right-aligned, strings as A<width> left-aligned.
  KOVA_Variable(std::string name, int type);

  const std::string& GetName() const { return fName; }
  void SetName(std::string name) { fName = std::move(name); }

  // Empty when the variable has none.
  const std::string& GetLabel() const { return fLabel; }
  void SetLabel(std::string label) { fLabel = std::move(label); }

  int GetType() const { return fType; }
  void SetType(int type) { fType = type; }
  bool IsNumeric() const { return fType == 0; }

  const KOVA_Format& GetFormat() const { return fFormat; }
  void SetFormat(const KOVA_Format& format) { fFormat = format; }
  const KOVA_Format& GetWriteFormat() const { return fWriteFormat; }
  void SetWriteFormat(const KOVA_Format& format) { fWriteFormat = format; }

  MeasurementLevel GetMeasurementLevel() const { return fLevel; }
  void SetMeasurementLevel(MeasurementLevel level) {
    fLevel = level;
    fbLevelSettled = false;
  }

  // Whether the level is one that nobody has given.
  bool IsLevelSettled() const { return fbLevelSettled; }
  void SettleMeasurementLevel(MeasurementLevel level) {
    fLevel = level;
    fbLevelSettled = true;
  }

  Time GetTime() const { return fTime; }
  void SetTime(Time time) { fTime = time; }

  Alignment GetAlignment() const { return fAlignment; }
  void SetAlignment(Alignment alignment) { fAlignment = alignment; }

  const KOVA_ValueLabelMap& GetValueLabels() const { return fValueLabels; }
  KOVA_ValueLabelMap& GetValueLabels() { return fValueLabels; }
  const KOVA_MissingValues& GetMissingValues() const { return fMissingValues; }
  KOVA_MissingValues& GetMissingValues() { return fMissingValues; }

 private:
  std::string fName;
  std::string fLabel;
  int fType;
  KOVA_Format fFormat;
  KOVA_Format fWriteFormat;
  MeasurementLevel fLevel = kUnknown;
  bool fbLevelSettled = false;
  Time fTime = kNoTime;
  Alignment fAlignment;
  KOVA_ValueLabelMap fValueLabels;
  KOVA_MissingValues fMissingValues;
};
