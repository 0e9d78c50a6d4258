// The active data as the host sees it: a dictionary, scans over the cases, and new columns.
//
// The second of the three interfaces that an application implements (or takes ours: MemoryTable,
// StreamedTable). Cases keep their order in every scan. Failures to read or write are thrown as
// HostIOError. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/data/KOVA_Variable.h"

namespace MCHost {

struct WholeTable;

// The distinct strings of one column. Codes count from 0 in order of first appearance; a table may
// append while it is scanned, but never renumbers.
class StringDictionary {
 public:
  virtual ~StringDictionary() = default;
  virtual std::int32_t Size() const = 0;
  // REQUIRES: 0 <= code < Size(). Stays valid as long as the table.
  virtual const std::string& At(std::int32_t code) const = 0;
};

// One column of a batch: numbers, or codes into a dictionary.
struct ColumnView {
  const double* fpNumbers = nullptr;      // numeric column; missing is KOVA_SystemMissing, NaN or
                                          // an infinity
  const std::int32_t* fpCodes = nullptr;  // string column; -1 is missing
  const StringDictionary* fpDictionary = nullptr;
};

// Consecutive cases, column by column, in the order in which the scan was asked for the columns.
// Everything in it stays valid until the scan moves on.
struct TableBatch {
  std::int64_t fFirstCase = 0;  // number of the first case in the table, from 0
  std::size_t fNCases = 0;      // at least 1
  std::vector<ColumnView> fColumns;
};

class ITableScan {
 public:
  virtual ~ITableScan() = default;
  // The next cases; null after the last. Throws HostIOError.
  virtual const TableBatch* Next() = 0;
};

class ITable {
 public:
  virtual ~ITable() = default;

  virtual int ColumnCount() const = 0;
  // REQUIRES: 0 <= column < ColumnCount(). References stay valid while columns are added.
  virtual KOVA_Variable& GetVariable(int column) = 0;
  virtual const KOVA_Variable& GetVariable(int column) const = 0;

  // The frequency weight variable, -1 for none.
  virtual int GetWeightVarIndex() const = 0;

  // The whole of which the table is a part, or whose parts lie elsewhere; null for a table that
  // stands for itself. Categories and ranges are then those of the whole.
  virtual const WholeTable* Whole() const { return nullptr; }

  // Starts reading the given columns from the first case. Scans do not disturb each other; all end
  // before the table does. Throws HostIOError.
  virtual std::unique_ptr<ITableScan> Scan(const std::vector<int>& columns) = 0;

  // Appends a variable, all its cells missing; returns its column.
  virtual int AddVariable(KOVA_Variable variable) = 0;

  // Stores cells of a variable made by AddVariable, for `n` consecutive cases. A string cell that
  // points nowhere is missing. Throws HostIOError.
  virtual void WriteNumbers(int column, std::int64_t firstCase, const double* values,
                            std::size_t n) = 0;
  virtual void WriteStrings(int column, std::int64_t firstCase, const std::string* const* values,
                            std::size_t n) = 0;
};

}  // namespace MCHost
