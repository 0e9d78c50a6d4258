// A session over a table in memory, and a table that fails when it is read.
#pragma once

#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/data/MemoryTable.h"
#include "host/session/HostBlocks.h"
#include "host/session/HostIOError.h"
#include "host/session/ISession.h"

namespace casetests {

inline const double kNaN = std::numeric_limits<double>::quiet_NaN();
inline const double kInf = std::numeric_limits<double>::infinity();

class TestSession final : public MCHost::ISession {
 public:
  explicit TestSession(MCHost::ITable& table) : fTable(table) {}
  const std::string& CommandText() const override { return fText; }
  int CommandLine() const override { return 1; }
  int CommandColumn() const override { return 1; }
  CmaSys& SystemBlock() override { return fSystem; }
  CmnGlb& CommonBlock() override { return fCommon; }
  MCHost::ITable& Table() override { return fTable; }
  MCHost::IOutputSink& Output() override { throw std::logic_error("no output here"); }
  void SetMacro(const std::string&, const std::vector<std::string>&) override {}
  const MCHost::AppParams& GetAppParams() const override { return fParams; }
  std::string TempPath() const override { return "/tmp"; }
  bool IsCancelled() const override { return fbCancelled; }
  void ReportProgress(const std::string&) override {}

  bool fbCancelled = false;

 private:
  MCHost::ITable& fTable;
  std::string fText;
  CmaSys fSystem;
  CmnGlb fCommon;
  MCHost::AppParams fParams;
};

// Shows another table's cells (with raw NaN and infinities where told) and fails at a batch.
class FragileTable final : public MCHost::ITable {
 public:
  explicit FragileTable(MCHost::ITable& table) : fTable(table) {}
  int ColumnCount() const override { return fTable.ColumnCount(); }
  KOVA_Variable& GetVariable(int column) override { return fTable.GetVariable(column); }
  const KOVA_Variable& GetVariable(int column) const override { return fTable.GetVariable(column); }
  int GetWeightVarIndex() const override { return fTable.GetWeightVarIndex(); }
  int AddVariable(KOVA_Variable variable) override { return fTable.AddVariable(variable); }
  void WriteNumbers(int, std::int64_t, const double*, std::size_t) override {
    throw MCHost::HostIOError("scores", "", "disk full");
  }
  void WriteStrings(int, std::int64_t, const std::string* const*, std::size_t) override {
    fbTookTexts = true;
  }

  std::unique_ptr<MCHost::ITableScan> Scan(const std::vector<int>& columns) override {
    return std::make_unique<FragileScan>(fTable.Scan(columns), fFailAtBatch);
  }

  int fFailAtBatch = -1;
  bool fbTookTexts = false;

 private:
  class FragileScan final : public MCHost::ITableScan {
   public:
    FragileScan(std::unique_ptr<MCHost::ITableScan> scan, int failAt)
        : fScan(std::move(scan)), fFailAt(failAt) {}
    const MCHost::TableBatch* Next() override {
      if (fBatch++ == fFailAt) throw MCHost::HostIOError("a.csv", "line 9", "bad byte");
      return fScan->Next();
    }

   private:
    std::unique_ptr<MCHost::ITableScan> fScan;
    int fFailAt;
    int fBatch = 0;
  };

  MCHost::ITable& fTable;
};

}  // namespace casetests
