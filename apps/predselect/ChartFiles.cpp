#include "apps/predselect/ChartFiles.h"

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <system_error>
#include <vector>

#include "apps/predselect/ChildProcess.h"
#include "apps/predselect/UsageError.h"
#include "host/output/OutputDocument.h"
#include "host/output/ShowText.h"
#include "host/output/report/ReadableChart.h"
#include "host/output/report/ReportFiles.h"
#include "host/session/HostIOError.h"
#include "host/session/OutputFile.h"

namespace PredSelectApp {

namespace {

using Json = nlohmann::ordered_json;

int Draw(const Json& charts) {
  const char* named = std::getenv("PREDSELECT_PYTHON");
  const std::string python = named != nullptr && *named != '\0' ? named : "python3";
  const std::string text = charts.dump(-1, ' ', false, Json::error_handler_t::replace);
  return RunChild({python, "-c", std::string(MCHost::ChartDrawer())}, text);
}

// "Predictor Summary Chart" is "predictor-summary-chart".
std::string PlainName(const std::string& title) {
  std::string plain;
  for (const char c : title) {
    const bool isUpper = c >= 'A' && c <= 'Z';
    if (isUpper || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')) {
      plain += isUpper ? static_cast<char>(c - 'A' + 'a') : c;
    } else if (!plain.empty() && plain.back() != '-') {
      plain += '-';
    }
  }
  return plain;
}

}  // namespace

void CheckChartFiles(const std::string& folder) {
  if (folder.empty()) return;
  MCHost::CheckOutputFolder(folder);
  if (Draw(Json::array()) == 0) return;
  throw UsageError(
      "--charts needs the Python package vl-convert-python: install it for python3, or let "
      "PREDSELECT_PYTHON name an interpreter that has it.");
}

void WriteChartFiles(MCHost::OutputDocument& document, const std::string& folder) {
  if (folder.empty()) return;
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) throw MCHost::HostIOError(folder, "", "cannot be made: " + error.message());
  Json charts = Json::array();
  std::size_t number = 0;
  for (const MCHost::OutputRun& run : document.GetRuns()) {
    ++number;
    for (const MCHost::OutputChart& chart : run.fCharts) {
      const std::string title = PlainName(MCHost::TextId(chart.fTitle));
      charts.push_back({{"path", folder + "/" + std::to_string(number) + "-" + title},
                        {"spec", MCHost::ReadableChart(Json::parse(chart.fVegaLite))}});
    }
  }
  if (Draw(charts) != 0) throw MCHost::HostIOError(folder, "", "the charts could not be drawn");
}

}  // namespace PredSelectApp
