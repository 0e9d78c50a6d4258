#include "host/output/chart/XDocument.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "common/MissingValue.h"
#include "host/output/FacSTDictionary.h"
#include "host/output/IOutputSink.h"
#include "host/output/OutputChart.h"
#include "host/session/ISession.h"
#include "host/session/SessionScope.h"

namespace {

using Json = nlohmann::ordered_json;

constexpr int kPixelsPerFrame = 360;
constexpr double kStepWidth = 24.0;
constexpr double kLeastRoom = 1.0;  // in steps, so that a point alone has some

// A point whose number is missing stays in the data and off the graph.
Json Data(const XGraph& graph) {
  Json values = Json::array();
  for (const XElement::Point& point : graph.GetElement().GetPoints()) {
    Json value = Json::object();
    value["x"] = graph.GetXVariable().Relabelled(point.fX);
    value["y"] = MCMV::IsMissing(point.fY) ? Json(nullptr) : Json(point.fY);
    const XVariable* color = graph.GetElement().GetColorVariable();
    if (color != nullptr) value["color"] = color->Relabelled(point.fColor);
    values.push_back(std::move(value));
  }
  return {{"values", std::move(values)}};
}

// The margins in steps: the document wants half of both, and what share is the lower one.
Json XScale(const XAxis& axis, std::size_t n) {
  const auto [lower, upper] = axis.GetMargins();
  const double steps = n > 1 ? static_cast<double>(n - 1) : 0.0;
  const double room = std::max((lower + upper) * steps, kLeastRoom);
  Json scale = {{"paddingOuter", room / 2.0}};
  if (lower != upper) scale["align"] = lower / (lower + upper);
  return scale;
}

Json XEncoding(const XVariable& variable, const XAxis& axis, std::size_t n) {
  const Json title = axis.IsLabelHidden() ? Json(nullptr) : Json(variable.GetLabel());
  return {{"field", "x"},
          {"type", "nominal"},
          {"sort", nullptr},  // the order of the data
          {"scale", XScale(axis, n)},
          {"axis", {{"title", title}, {"labelFontSize", axis.GetTickFontSize()}}}};
}

Json YEncoding(const XVariable& variable, const XAxis& axis) {
  Json scale = {{"reverse", axis.IsInverted()}, {"nice", axis.IsNice()}};
  if (axis.GetInterval()) {
    const auto [from, to] = *axis.GetInterval();
    const auto [lower, upper] = axis.GetMargins();
    scale["domain"] = {from - lower * (to - from), to + upper * (to - from)};
    scale["nice"] = false;  // it would take the margins for a part of the range
  }
  Json look = {{"title", variable.GetLabel()}, {"labelFontSize", axis.GetTickFontSize()}};
  if (variable.GetNumberFormat() == XVariable::kThreeDecimals) look["format"] = ".3f";
  return {{"field", "y"},
          {"type", "quantitative"},
          {"scale", std::move(scale)},
          {"axis", std::move(look)}};
}

Json ColorEncoding(const XVariable& variable) {
  Json domain = Json::array();
  for (const auto& [value, text] : variable.GetRelabels()) domain.push_back(text);
  return {{"field", "color"},
          {"type", "nominal"},
          {"title", variable.GetLabel()},
          {"scale", {{"domain", std::move(domain)}}}};
}

Json PointLayer(const XGraph& graph) {
  const XVariable& x = graph.GetXVariable();
  const XVariable& y = graph.GetYVariable();
  const std::size_t n = graph.GetElement().GetPoints().size();
  Json encoding = {{"x", XEncoding(x, graph.GetXAxis(), n)}, {"y", YEncoding(y, graph.GetYAxis())}};
  encoding["tooltip"] = Json::array(
      {{{"field", "x"}, {"title", x.GetLabel()}}, {{"field", "y"}, {"title", y.GetLabel()}}});
  const XVariable* color = graph.GetElement().GetColorVariable();
  if (color != nullptr) encoding["color"] = ColorEncoding(*color);
  return {{"mark", {{"type", "point"}, {"filled", true}, {"size", 75}}},
          {"encoding", std::move(encoding)}};
}

Json LineLayer(const XGraph::ReferenceLine& line) {
  Json mark = {{"type", "rule"}, {"color", "gray"}};
  if (line.fStyle == "dash") mark["strokeDash"] = {6, 4};
  return {{"data", {{"values", Json::array({{{"y", line.fValue}}})}}},
          {"mark", std::move(mark)},
          {"encoding", {{"y", {{"field", "y"}, {"type", "quantitative"}}}}}};
}

}  // namespace

std::string XDocument::ToVegaLite() const {
  Json json = Json::object();
  json["$schema"] = "https://vega.github.io/schema/vega-lite/v5.json";
  json["title"] = {{"text", FacSTDictionary().Lookup(fTitleKey)}};
  if (!fFootnotes.empty()) json["title"]["subtitle"] = fFootnotes;
  json["width"] = {{"step", kStepWidth}};
  json["height"] = kPixelsPerFrame * fFrameHeight;
  json["data"] = Data(fGraph);
  json["layer"] = Json::array({PointLayer(fGraph)});
  for (const XGraph::ReferenceLine& line : fGraph.GetReferenceLines()) {
    json["layer"].push_back(LineLayer(line));
  }
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void XDocument::Show() const {
  MCHost::CurrentSession().Output().AddChart({MCHost::OutputText::Key(fTitleKey), ToVegaLite()});
}
