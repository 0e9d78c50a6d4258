#include "host/output/report/RenderReport.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

#include "common/MCAssert.h"
#include "host/output/OutputDocument.h"
#include "host/output/ShowText.h"
#include "host/output/report/ReadableChart.h"
#include "host/output/report/ReportFiles.h"
#include "host/output/report/ReportPayload.h"
#include "host/session/HostIOError.h"
#include "host/text/VisibleText.h"

namespace MCHost {

namespace {

using Json = nlohmann::ordered_json;

void MakeVisible(Json& json) {
  if (json.is_string()) {
    json = VisibleText(json.get_ref<const std::string&>(), "\n\t");
  } else if (json.is_structured()) {
    for (Json& part : json) MakeVisible(part);
  }
}

// No text can end the element that holds it, or begin another.
std::string ForScript(const Json& json) {
  std::string text;
  for (const char c : json.dump(-1, ' ', false, Json::error_handler_t::replace)) {
    if (c == '<') {
      text += "\\u003c";
    } else {
      text += c;
    }
  }
  return text;
}

std::string ForText(const std::string& plain) {
  std::string text;
  for (const char c : plain) {
    if (c == '<') {
      text += "&lt;";
    } else if (c == '&') {
      text += "&amp;";
    } else {
      text += c;
    }
  }
  return text;
}

// Adds the page up to a place, and puts a text there; the page is what is left.
void Fill(std::string_view& page, std::string_view place, std::string_view text,
          std::string& filled) {
  const std::size_t at = page.find(place);
  MCCommon::Assert(at != std::string_view::npos, "the page has the place", "host/output/report");
  filled.append(page.substr(0, at)).append(text);
  page.remove_prefix(at + place.size());
}

std::string Page(Json payload, const std::string& title, bool withCharts) {
  MakeVisible(payload);
  std::string_view page = ReportPage();
  std::string filled;
  Fill(page, kReportTitle, ForText(VisibleText(title, "")), filled);
  Fill(page, kReportPayload, ForScript(payload), filled);
  Fill(page, kReportCharts, withCharts ? ReportCharts() : std::string_view(), filled);
  return filled.append(page);
}

// Documents are flat; what is nested a thousand times would end the stack of whoever reads it.
constexpr int kMostNested = 64;

Json Parse(const std::string& text) {
  bool isDeep = false;
  const auto look = [&](int depth, Json::parse_event_t, Json&) {
    isDeep = isDeep || depth > kMostNested;
    return !isDeep;
  };
  Json document = Json::parse(text, look, false);
  return isDeep ? Json() : document;
}

// The charts of a run as a page shows them. Throws Json::exception for others than our own, which
// would not be drawn but obeyed.
void MakeReadable(Json& run) {
  for (Json& chart : run["charts"]) {
    if (!IsReadableChart(chart.at("vegalite"))) {
      throw Json::other_error::create(501, "chart", &chart);
    }
    chart["spec"] = ReadableChart(chart["vegalite"]);
    chart.erase("vegalite");
  }
}

// Throws HostIOError for a text that is no output document.
Json ReadDocument(const std::string& text, const std::string& path) {
  Json document = Parse(text);
  const bool isDocument = document.is_object() && document.contains("predselect") &&
                          document.contains("runs") && document["runs"].is_array();
  if (!isDocument) {
    throw HostIOError(path, "", KeyText("is no document that predselect has written as JSON"));
  }
  for (Json& run : document["runs"]) {
    if (!run.is_object() || !run.contains("charts") || !run["charts"].is_array()) {
      throw HostIOError(path, "", KeyText("holds a run without its charts"));
    }
    try {
      MakeReadable(run);
    } catch (const Json::exception&) {
      throw HostIOError(path, "", KeyText("holds a chart that predselect has not written"));
    }
  }
  return document;
}

// Of whose data the document is, else of the document's.
std::string HeadingOf(const Json& document, const std::string& path) {
  const auto data = document.find("data");
  if (data != document.end() && data->is_object() && data->contains("source") &&
      (*data)["source"].is_string() && !(*data)["source"].get_ref<const std::string&>().empty()) {
    return std::filesystem::path((*data)["source"].get<std::string>()).filename().string();
  }
  return std::filesystem::path(path).filename().string();
}

bool HasCharts(const Json& runs) {
  for (const Json& run : runs) {
    if (!run["charts"].empty()) return true;
  }
  return false;
}

}  // namespace

std::string RenderReport(const OutputDocument& document, const std::string& heading) {
  Json payload = ReportPayload(document, heading);
  const bool withCharts = HasCharts(payload["runs"]);
  return Page(std::move(payload), heading, withCharts);
}

std::string RenderReportOfJson(const std::string& json, const std::string& path) {
  Json document = ReadDocument(json, path);
  const bool withCharts = HasCharts(document["runs"]);
  const std::string heading = HeadingOf(document, path);
  Json payload = {{"heading", heading}, {"document", std::move(document)}};
  return Page(std::move(payload), heading, withCharts);
}

}  // namespace MCHost
