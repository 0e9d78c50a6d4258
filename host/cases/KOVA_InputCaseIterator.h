// The case that a stream is looking at, cell by cell, and the place to store new values for it.
//
// Belongs to an input adapter and follows whichever of its streams reads. Sees the variables that
// the adapter's scan reads. New values wait until the stream leaves a chunk of cases and then go to
// the table together.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "host/data/ITable.h"

class UACaseScan;

class KOVA_InputCaseIterator {
 public:
  // `scanColumns`: the variables that are read, in the order of the scan.
  KOVA_InputCaseIterator(MCHost::ITable& table, const std::vector<int>& scanColumns);

  const KOVA_Variable& GetVariable(int var) const;

  // The cell as it is in the data; KOVA_SystemMissing for a null, NaN or infinite one and for a
  // string variable. REQUIRES: the variable is read; a stream is at a case.
  double GetNumericValue(int var) const;

  // Null when the cell is missing or numeric. REQUIRES: as above.
  const std::string* GetStringValue(int var) const;

  // Stores a value of a variable made by KOVA_DataSource::MakeVariable for the current case; false
  // outside the last pass. A string is cut to `width` bytes, at the end of a character.
  bool SetColumnValue(int var, double value);
  bool SetColumnValue(int var, const std::string& value, int width);

  // The same for many cases: a variable's cells of the stream's chunk of cases, missing until they
  // are set; of a string variable pointers to texts that outlive the chunk.
  // REQUIRES: MayStore(), in the last pass and at a case.
  double* NumberColumn(int var);
  const std::string** StringColumn(int var);
  bool MayStore() const;

  // A string's first bytes, at most `width`, up to the end of a character.
  static std::string Cut(const std::string& value, int width);

  // For the streams: which scan is looked at, whether values may be stored, and handing the stored
  // values of the current chunk to the table (throws HostIOError).
  void Follow(UACaseScan* scan) { fpScan = scan; }
  void SetLastPass(bool last) { fbLastPass = last; }
  void WriteValues();

 private:
  std::size_t ScanColumn(int var) const;

  MCHost::ITable* fpTable;
  UACaseScan* fpScan = nullptr;
  bool fbLastPass = false;
  std::vector<int> fScanPlaces;  // by variable; -1 for one that is not read
  std::map<int, std::vector<double>> fNumbers;
  std::map<int, std::vector<const std::string*>> fStrings;  // into fTexts
  std::map<int, std::vector<std::string>> fTexts;
};
