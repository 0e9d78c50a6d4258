#include "host/output/report/ReadableChart.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "host/output/ShowText.h"

namespace MCHost {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kSchema = "https://vega.github.io/schema/vega-lite/v6.json";
constexpr double kLeastZeros = 16.0;  // of a p-value that was rounded to 0

// A p-value by its logarithm: how many zeros stand behind the point.
double Zeros(double p) { return -std::log10(p); }

// Of a p-value of 0: as many as any other has, at least.
double MostZeros(const Json& points) {
  double most = kLeastZeros;
  for (const Json& point : points) {
    if (point["y"].is_number() && point["y"] > 0.0) most = std::max(most, Zeros(point["y"]));
  }
  return most;
}

// What a rule stands at is a p-value: the cut-off.
const Json* CutOff(const Json& chart) {
  for (const Json& layer : chart["layer"]) {
    const auto data = layer.find("data");
    if (data != layer.end()) return &(*data)["values"][0]["y"];
  }
  return nullptr;
}

Json Data(const Json& chart, bool isP) {
  Json values = Json::array();
  const Json& points = chart["data"]["values"];
  const double most = isP ? MostZeros(points) : 0.0;
  for (const Json& point : points) {
    Json value = {{"predictor", point["x"]}, {"place", values.size() + 1}, {"value", point["y"]}};
    value["length"] = nullptr;
    if (point["y"].is_number()) {
      const double y = point["y"];
      value["length"] = !isP ? y : y > 0.0 ? Zeros(y) : most;
    }
    if (point.contains("color")) value["group"] = point["color"];
    values.push_back(std::move(value));
  }
  return {{"values", std::move(values)}};
}

Json Bars(const Json& drawn, bool isP) {
  const Json& encoding = drawn["encoding"];
  const Json title = encoding["y"]["axis"]["title"];
  Json y = {{"field", "predictor"},
            {"type", "nominal"},
            {"sort", {{"field", "place"}}},
            {"axis", {{"title", nullptr}, {"labelLimit", 260}}}};
  Json x = {{"field", "length"},
            {"type", "quantitative"},
            {"axis", {{"title", isP ? Json(KeyText("−log₁₀ p")) : title}, {"tickCount", 6}}}};
  Json bars = {{"mark", {{"type", "bar"}, {"height", {{"band", 0.7}}}}},
               {"encoding", {{"y", std::move(y)}, {"x", std::move(x)}}}};
  bars["encoding"]["tooltip"] = {{{"field", "predictor"}, {"title", "Predictor"}},
                                 {{"field", "value"}, {"title", title}}};
  if (encoding.contains("color")) {
    bars["encoding"]["color"] = {
        {"field", "group"},
        {"type", "nominal"},
        {"title", encoding["color"]["title"]},
        {"legend", {{"orient", "bottom"}}},
        {"scale",
         {{"domain", encoding["color"]["scale"]["domain"]}, {"range", {"#1f5fa8", "#8a8f98"}}}}};
  }
  return bars;
}

Json Line(double cutOff) {
  return {{"data", {{"values", {{{"length", Zeros(cutOff)}}}}}},
          {"mark", {{"type", "rule"}, {"color", "#444444"}, {"strokeDash", {6, 4}}}},
          {"encoding", {{"x", {{"field", "length"}, {"type", "quantitative"}}}}}};
}

}  // namespace

Json ReadableChart(const Json& chart) {
  const bool isKnown = chart.contains("layer") && chart["layer"].is_array() &&
                       !chart["layer"].empty() && chart["layer"][0].contains("encoding") &&
                       chart.contains("data") && chart["data"].contains("values");
  if (!isKnown) return chart;
  const Json* cutOff = CutOff(chart);
  const bool isP = cutOff != nullptr;
  Json readable = {{"$schema", kSchema}, {"title", chart["title"]}};
  readable["title"]["anchor"] = "start";
  readable["background"] = "#ffffff";
  readable["padding"] = 12;
  readable["width"] = 460;
  readable["height"] = {{"step", 20}};
  readable["data"] = Data(chart, isP);
  readable["transform"] = {{{"filter", "datum.place<=" + std::to_string(kReadablePredictors)}}};
  readable["layer"] = Json::array({Bars(chart["layer"][0], isP)});
  if (isP) readable["layer"].push_back(Line(cutOff->get<double>()));
  return readable;
}

}  // namespace MCHost
