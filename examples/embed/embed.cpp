// A complete host in one file: an application that keeps its own data lets PredSelect rank the
// columns of a small table, and prints what comes out.
//
// It implements the three interfaces on which the procedures stand: a table (dictionary, scans, new
// columns), an output sink (messages, notes, tables, charts) and a session (command text, state,
// cancel). Everything else is the library's.

#include <cstdio>
#include <deque>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "backend/predselect/predsele.h"
#include "host/data/ITable.h"
#include "host/output/IOutputSink.h"
#include "host/output/OutputChart.h"
#include "host/output/OutputFormat.h"
#include "host/output/OutputMessage.h"
#include "host/output/OutputNote.h"
#include "host/output/OutputTable.h"
#include "host/output/ShowText.h"
#include "host/session/HostBlocks.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

namespace {

// Loans of a small bank: who paid back? Ages in years, incomes in thousands; one is not known.
constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();

struct Loan {
  double fAge;
  double fIncome;
  const char* fHome;
  const char* fPaidBack;
};

const std::vector<Loan> kLoans = {
    {34, 41, "owned", "yes"},  {51, 62, "owned", "yes"},  {27, 18, "rented", "no"},
    {45, 55, "owned", "yes"},  {23, 21, "rented", "no"},  {38, 30, "rented", "yes"},
    {29, 24, "rented", "no"},  {60, 48, "owned", "yes"},  {41, kUnknown, "rented", "no"},
    {33, 35, "owned", "yes"},  {26, 19, "rented", "yes"}, {48, 27, "owned", "no"},
    {55, 58, "owned", "yes"},  {31, 22, "rented", "no"},  {44, 39, "owned", "yes"},
    {36, 33, "rented", "yes"},
};

// The strings of one column, coded in order of first appearance.
class Strings : public MCHost::StringDictionary {
 public:
  std::int32_t Size() const override { return static_cast<std::int32_t>(fStrings.size()); }
  const std::string& At(std::int32_t code) const override { return fStrings[code]; }

  std::int32_t Code(const std::string& text) {
    for (std::int32_t code = 0; code < Size(); ++code) {
      if (fStrings[code] == text) return code;
    }
    fStrings.push_back(text);
    return Size() - 1;
  }

 private:
  std::deque<std::string> fStrings;
};

// The application's data, column by column.
class LoanTable : public MCHost::ITable {
 public:
  LoanTable() {
    std::vector<double> age, income;
    std::vector<std::string> home, paidBack;
    for (const Loan& loan : kLoans) {
      age.push_back(loan.fAge);
      income.push_back(loan.fIncome);
      home.push_back(loan.fHome);
      paidBack.push_back(loan.fPaidBack);
    }
    AddNumbers("age", age);
    AddNumbers("income", income);
    AddStrings("home", home);
    AddStrings("paid_back", paidBack);
  }

  int ColumnCount() const override { return static_cast<int>(fColumns.size()); }
  KOVA_Variable& GetVariable(int column) override { return fColumns[column].fVariable; }
  const KOVA_Variable& GetVariable(int column) const override { return fColumns[column].fVariable; }
  int GetWeightVarIndex() const override { return -1; }

  std::unique_ptr<MCHost::ITableScan> Scan(const std::vector<int>& columns) override {
    return std::make_unique<WholeTable>(*this, columns);
  }

  // SELECTPRED adds no variables, so this host has no room for any.
  int AddVariable(KOVA_Variable) override { return -1; }
  void WriteNumbers(int, std::int64_t, const double*, std::size_t) override {}
  void WriteStrings(int, std::int64_t, const std::string* const*, std::size_t) override {}

 private:
  struct Column {
    KOVA_Variable fVariable;
    std::vector<double> fNumbers;
    std::vector<std::int32_t> fCodes;
    Strings fStrings;
  };

  // A scan that gives the whole table as one batch.
  class WholeTable : public MCHost::ITableScan {
   public:
    WholeTable(const LoanTable& table, const std::vector<int>& columns) {
      fBatch.fNCases = kLoans.size();
      for (int column : columns) {
        const Column& source = table.fColumns[column];
        if (source.fVariable.IsNumeric()) {
          fBatch.fColumns.push_back({source.fNumbers.data(), nullptr, nullptr});
        } else {
          fBatch.fColumns.push_back({nullptr, source.fCodes.data(), &source.fStrings});
        }
      }
    }
    const MCHost::TableBatch* Next() override {
      return fbRead ? nullptr : (fbRead = true, &fBatch);
    }

   private:
    MCHost::TableBatch fBatch;
    bool fbRead = false;
  };

  void AddNumbers(const std::string& name, const std::vector<double>& values) {
    KOVA_Variable variable(name, 0);
    variable.SetMeasurementLevel(KOVA_Variable::kScale);
    fColumns.push_back({variable, values, {}, {}});
  }

  void AddStrings(const std::string& name, const std::vector<std::string>& values) {
    KOVA_Variable variable(name, 8);
    variable.SetMeasurementLevel(KOVA_Variable::kNominal);
    Column& column = fColumns.emplace_back(Column{variable, {}, {}, {}});
    for (const std::string& value : values) column.fCodes.push_back(column.fStrings.Code(value));
  }

  std::deque<Column> fColumns;
};

// Prints results as they arrive.
class Printer : public MCHost::IOutputSink {
 public:
  void AddMessage(MCHost::OutputMessage message) override {
    std::printf("%s: %s\n", MCHost::SeverityName(message.fLevel),
                MCHost::ShowText(message.fText).c_str());
  }

  void AddNote(MCHost::OutputNote note) override {
    std::printf("%s: %s\n", MCHost::ShowText(note.fTitle).c_str(),
                MCHost::ShowText(note.fText).c_str());
  }

  void AddTable(MCHost::OutputTable table) override {
    std::printf("\n%s\n", MCHost::ShowText(table.fTitle).c_str());
    for (const MCHost::OutputCell& cell : table.fCells) {
      std::string path;
      for (std::size_t d = 0; d < table.fDimensions.size(); ++d) {
        for (int category : table.fDimensions[d].PathTo(cell.fPlace[d])) {
          path += MCHost::ShowText(table.fDimensions[d].fCategories[category].fLabel) + ": ";
        }
      }
      std::printf("  %s%s\n", path.c_str(), ShowCell(cell).c_str());
    }
  }

  void AddChart(MCHost::OutputChart chart) override {
    std::printf("\n%s: a chart\n", MCHost::ShowText(chart.fTitle).c_str());
  }

 private:
  static std::string ShowCell(const MCHost::OutputCell& cell) {
    if (const double* number = std::get_if<double>(&cell.fValue)) {
      return MCHost::FormatNumber(*number, cell.fFormat);
    }
    const auto* text = std::get_if<MCHost::OutputText>(&cell.fValue);
    return text != nullptr ? MCHost::ShowText(*text) : "";
  }
};

// What the procedures ask of the application during one command.
class LoanSession : public MCHost::ISession {
 public:
  LoanSession(MCHost::ITable& table, MCHost::IOutputSink& output, std::string command)
      : fTable(table), fOutput(output), fCommand(std::move(command)) {
    fSystem.fCommandWord = fCommand.substr(0, fCommand.find(' '));
  }

  const std::string& CommandText() const override { return fCommand; }
  int CommandLine() const override { return 1; }
  int CommandColumn() const override { return 1; }
  CmaSys& SystemBlock() override { return fSystem; }
  CmnGlb& CommonBlock() override { return fCommon; }
  MCHost::ITable& Table() override { return fTable; }
  MCHost::IOutputSink& Output() override { return fOutput; }
  void SetMacro(const std::string& name, const std::vector<std::string>& values) override {
    std::printf("\n!%s:", name.c_str());
    for (const std::string& value : values) std::printf(" %s", value.c_str());
    std::printf("\n");
  }
  const MCHost::AppParams& GetAppParams() const override { return fParams; }
  std::string TempPath() const override { return "/tmp"; }
  bool IsCancelled() const override { return false; }
  void ReportProgress(const std::string&) override {}

 private:
  MCHost::ITable& fTable;
  MCHost::IOutputSink& fOutput;
  std::string fCommand;
  CmaSys fSystem;
  CmnGlb fCommon;
  MCHost::AppParams fParams{"Loan desk", "1.0", "Example"};
};

}  // namespace

int main() {
  LoanTable table;
  Printer printer;
  LoanSession session(table, printer,
                      "SELECTPRED paid_back BY home WITH age income "
                      "/CRITERIA PCUTOFF=0.05 SHOWUNSELECTED=3 "
                      "/MACROVAR FACTORS=factors COVARIATES=covariates.");
  const MCHost::SessionScope scope(session);
  predsele_();
  return session.CommonBlock().IsErrorSet() ? 1 : 0;
}
