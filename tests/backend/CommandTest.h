// Runs whole commands over a small table in memory and reads their JSON documents.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "backend/predselect/predsele.h"
#include "host/data/MemoryTable.h"
#include "host/output/FacSTDictionary.h"
#include "host/output/OutputDocument.h"
#include "host/output/render/RenderJson.h"
#include "host/session/Session.h"
#include "host/session/SessionScope.h"

namespace MCTest {

using nlohmann::json;
using Strings = std::vector<std::optional<std::string>>;

// A test fills the table first.
class CommandTest : public testing::Test {
 protected:
  json Run(const std::string& command) {
    MCHost::OutputDocument document;
    fpSession = std::make_unique<MCHost::Session>(fTable, document);
    const MCHost::SessionScope scope(*fpSession);
    fpSession->SetCommand(command);
    document.BeginRun(fpSession->SystemBlock().fCommandWord);
    fpSession->SetTempPath(fTempPath);
    fpSession->SetCancelQuery([this] { return fPollsLeft >= 0 && fPollsLeft-- == 0; });
    fpSession->SetProgressListener(
        [this](const std::string&) { fRoom = fpSession->CommonBlock().fMaxObsAdded; });
    predsele_();
    fbError = fpSession->CommonBlock().IsErrorSet();
    const json rendered = json::parse(MCHost::RenderJson(document));
    for (const auto& [key, text] : rendered["strings"].items()) {
      EXPECT_TRUE(FacSTDictionary().Contains(key)) << "shown without an entry: " << key;
    }
    return rendered["runs"][0];
  }

  static std::vector<std::string> Titles(const json& run) {
    std::vector<std::string> titles;
    for (const json& table : run["tables"]) titles.push_back(table["title"]);
    return titles;
  }
  static std::vector<std::string> Keys(const json& run) {
    std::vector<std::string> keys;
    for (const json& message : run["messages"]) keys.push_back(message["key"]);
    return keys;
  }
  // The value of the first cell that stands there, in any layer unless one is named.
  static json Cell(const json& run, const std::string& subtype, const json& row, const json& column,
                   const json& layer = nullptr) {
    for (const json& table : run["tables"]) {
      if (table["subtype"] != subtype) continue;
      for (const json& cell : table["cells"]) {
        const bool isLayer = layer.is_null() || cell["layer"] == layer;
        if (cell["row"] == row && cell["column"] == column && isLayer) return cell["value"];
      }
    }
    return "no such cell";
  }

  MCHost::MemoryTable fTable;
  std::unique_ptr<MCHost::Session> fpSession;
  std::string fTempPath = "/tmp";
  int fPollsLeft = -1;  // times that the user is asked before the wish to stop; -1 for no such wish
  bool fbError = false;
  int fRoom = 0;  // reserved for new variables while a command ran, in 8-byte values
};

}  // namespace MCTest
