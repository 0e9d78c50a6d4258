// One reading of the table by one stream: chunks of consecutive cases, prepared as record columns.
//
// Between an input adapter, which knows what the columns mean, and a stream, which decides what is
// delivered. Holds one chunk at a time; columns that need no conversion are the table's own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "host/data/ITable.h"

class UACaseScan {
 public:
  // `nRecordVars`: columns of a record. `pass`: how many scans of the data began before this one.
  UACaseScan(std::unique_ptr<MCHost::ITableScan> scan, int nRecordVars, int pass);

  // Goes on to the next chunk of cases; false at the end. Throws HostIOError.
  bool NextChunk();

  // How many cases the chunk has, and the number of its first in the table, from 0; at the end
  // none, and the number of all.
  std::size_t Cases() const { return fNCases; }
  std::int64_t FirstCase() const { return fFirstCase; }
  int Pass() const { return fPass; }

  // The chunk's raw cells. REQUIRES: a chunk; a column of the scan.
  MCHost::ColumnView Raw(std::size_t scanColumn) const;

  // The chunk's values of a record column, and room to prepare them in.
  const double* Column(std::size_t recordVar) const { return fColumns[recordVar]; }
  void SetColumn(std::size_t recordVar, const double* values) { fColumns[recordVar] = values; }
  double* Buffer(std::size_t recordVar);

  // The place in the chunk of the case that is being looked at.
  std::size_t GetCase() const { return fCase; }
  void SetCase(std::size_t i) { fCase = i; }

 private:
  std::unique_ptr<MCHost::ITableScan> fpScan;
  int fPass;
  std::size_t fMaxCases;
  const MCHost::TableBatch* fpBatch = nullptr;
  std::size_t fOffset = 0;
  std::size_t fNCases = 0;
  std::int64_t fFirstCase = 0;
  std::size_t fCase = 0;
  std::vector<const double*> fColumns;
  std::vector<std::vector<double>> fBuffers;
};
