// A small host for tests of the command language: a dictionary without cases, a sink that keeps
// messages as their author reads them, and a session over both, installed for the thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/data/ITable.h"
#include "host/output/IOutputSink.h"
#include "host/output/OutputChart.h"
#include "host/output/OutputMessage.h"
#include "host/output/OutputNote.h"
#include "host/output/OutputTable.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"

namespace MCTest {

class FakeTable : public MCHost::ITable {
 public:
  void Add(const std::string& name, int type, KOVA_Variable::MeasurementLevel level) {
    fVariables.emplace_back(name, type);
    fVariables.back().SetMeasurementLevel(level);
  }
  void SetWeight(int column) { fWeight = column; }

  int ColumnCount() const override { return static_cast<int>(fVariables.size()); }
  KOVA_Variable& GetVariable(int column) override {
    return fVariables.at(static_cast<std::size_t>(column));
  }
  const KOVA_Variable& GetVariable(int column) const override {
    return fVariables.at(static_cast<std::size_t>(column));
  }
  int GetWeightVarIndex() const override { return fWeight; }
  std::unique_ptr<MCHost::ITableScan> Scan(const std::vector<int>&) override { return nullptr; }
  int AddVariable(KOVA_Variable variable) override {
    fVariables.push_back(std::move(variable));
    return ColumnCount() - 1;
  }
  void WriteNumbers(int, std::int64_t, const double*, std::size_t) override {}
  void WriteStrings(int, std::int64_t, const std::string* const*, std::size_t) override {}

 private:
  std::vector<KOVA_Variable> fVariables;
  int fWeight = -1;
};

// Keeps "Error: text" with its place below, each line ended.
class MessageSink : public MCHost::IOutputSink {
 public:
  void AddMessage(MCHost::OutputMessage message) override {
    std::string text = message.fText.fKey;
    for (std::size_t i = 0; i < message.fText.fArguments.size(); ++i) {
      const std::string placeholder = "^" + std::to_string(i + 1);
      const std::string& argument = message.fText.fArguments[i].fKey;
      for (std::size_t at = 0; (at = text.find(placeholder, at)) != std::string::npos;) {
        text.replace(at, placeholder.size(), argument);
        at += argument.size();
      }
    }
    fSaid += (message.fLevel == 3 ? "Error: " : "Warning: ") + text + "\n";
    if (!message.fDetail.empty()) fSaid += message.fDetail + "\n";
  }
  void AddNote(MCHost::OutputNote) override {}
  void AddTable(MCHost::OutputTable) override {}
  void AddChart(MCHost::OutputChart) override {}

  std::string fSaid;
};

// Variables 0 to 8: species, island (strings), bill_length_mm, bill_depth_mm, flipper_length_mm,
// body_mass_g (scale), sex (string), year (ordinal), "wing span" (scale).
class FakeHost {
 public:
  FakeHost() : fSession(fTable, fSink), fScope(fSession) {
    fTable.Add("species", 9, KOVA_Variable::kNominal);
    fTable.Add("island", 9, KOVA_Variable::kNominal);
    for (const char* name : {"bill_length_mm", "bill_depth_mm", "flipper_length_mm"}) {
      fTable.Add(name, 0, KOVA_Variable::kScale);
    }
    fTable.Add("body_mass_g", 0, KOVA_Variable::kScale);
    fTable.Add("sex", 6, KOVA_Variable::kNominal);
    fTable.Add("year", 0, KOVA_Variable::kOrdinal);
    fTable.Add("wing span", 0, KOVA_Variable::kScale);
  }

  FakeTable fTable;
  MessageSink fSink;
  MCHost::Session fSession;

 private:
  MCHost::SessionScope fScope;
};

}  // namespace MCTest
