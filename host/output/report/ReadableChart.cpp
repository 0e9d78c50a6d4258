#include "host/output/report/ReadableChart.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

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
    const Json& y = point.at("y");
    if (y.is_number() && y > 0.0) most = std::max(most, Zeros(y));
  }
  return most;
}

// What a rule stands at is a p-value: the cut-off.
const Json* CutOff(const Json& chart) {
  for (const Json& layer : chart.at("layer")) {
    const auto data = layer.find("data");
    if (data != layer.end()) return &data->at("values").at(0).at("y");
  }
  return nullptr;
}

Json Data(const Json& chart, bool isP) {
  Json values = Json::array();
  const Json& points = chart.at("data").at("values");
  const double most = isP ? MostZeros(points) : 0.0;
  for (const Json& point : points) {
    Json value = {{"predictor", point.at("x").get<std::string>()},
                  {"place", values.size() + 1},
                  {"value", point.at("y")}};
    value["length"] = nullptr;
    if (point["y"].is_number()) {
      const double y = point["y"];
      value["length"] = !isP ? y : y > 0.0 ? Zeros(y) : most;
    }
    if (point.contains("color")) value["group"] = point["color"].get<std::string>();
    values.push_back(std::move(value));
  }
  return {{"values", std::move(values)}};
}

Json Bars(const Json& drawn, bool isP) {
  const Json& encoding = drawn.at("encoding");
  const std::string title = encoding.at("y").at("axis").at("title");
  Json y = {{"field", "predictor"},
            {"type", "nominal"},
            {"sort", {{"field", "place"}}},
            {"axis", {{"title", nullptr}, {"labelLimit", 260}}}};
  Json x = {{"field", "length"},
            {"type", "quantitative"},
            {"axis", {{"title", isP ? KeyText("−log₁₀ p") : title}, {"tickCount", 6}}}};
  Json bars = {{"mark", {{"type", "bar"}, {"height", {{"band", 0.7}}}}},
               {"encoding", {{"y", std::move(y)}, {"x", std::move(x)}}}};
  bars["encoding"]["tooltip"] = {{{"field", "predictor"}, {"title", "Predictor"}},
                                 {{"field", "value"}, {"title", title}}};
  if (encoding.contains("color")) {
    bars["encoding"]["color"] = {
        {"field", "group"},
        {"type", "nominal"},
        {"title", encoding["color"].at("title").get<std::string>()},
        {"legend", {{"orient", "bottom"}}},
        {"scale",
         {{"domain", encoding["color"].at("scale").at("domain").get<std::vector<std::string>>()},
          {"range", {"#1f5fa8", "#8a8f98"}}}}};
  }
  return bars;
}

Json Line(double cutOff) {
  return {{"data", {{"values", {{{"length", Zeros(cutOff)}}}}}},
          {"mark", {{"type", "rule"}, {"color", "#444444"}, {"strokeDash", {6, 4}}}},
          {"encoding", {{"x", {{"field", "length"}, {"type", "quantitative"}}}}}};
}

// The chart's own words, and what is to be known of the bars of p-values that are 0.
Json Title(const Json& chart, bool isP) {
  Json title = {{"text", chart.at("title").at("text").get<std::string>()}, {"anchor", "start"}};
  auto below = chart["title"].value("subtitle", std::vector<std::string>());
  const Json& points = chart.at("data").at("values");
  const auto isZero = [](const Json& point) { return point.at("y") == 0.0; };
  if (isP && std::any_of(points.begin(), points.end(), isZero)) {
    below.push_back(KeyText("p-values of 0 are drawn as long as the least one..."));
  }
  if (!below.empty()) title["subtitle"] = below;
  return title;
}

}  // namespace

bool IsReadableChart(const Json& chart) {
  return chart.contains("layer") && chart["layer"].is_array() && !chart["layer"].empty() &&
         chart["layer"][0].contains("encoding") && chart.contains("data") &&
         chart["data"].contains("values");
}

Json ReadableChart(const Json& chart) {
  if (!IsReadableChart(chart)) return chart;
  const Json* cutOff = CutOff(chart);
  const bool isP = cutOff != nullptr;
  Json readable = {{"$schema", kSchema}, {"title", Title(chart, isP)}};
  readable["background"] = "#ffffff";
  readable["padding"] = 12;
  readable["width"] = 460;
  readable["height"] = {{"step", 20}};
  readable["data"] = Data(chart, isP);
  readable["transform"] = {{{"filter", "datum.place<=" + std::to_string(kReadablePredictors)}}};
  readable["layer"] = Json::array({Bars(chart.at("layer").at(0), isP)});
  if (isP) readable["layer"].push_back(Line(cutOff->get<double>()));
  return readable;
}

}  // namespace MCHost
