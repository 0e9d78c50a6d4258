// A chart of predictors as people want to look at it: horizontal bars, the best on top, p-values by
// their logarithm.
#pragma once

#include <nlohmann/json.hpp>

namespace MCHost {

// So many predictors are drawn at first.
inline constexpr int kReadablePredictors = 30;

// Whether it looks like a document that XDocument has made.
bool IsReadableChart(const nlohmann::ordered_json& chart);

// Another Vega-Lite document with the data of one that XDocument has made. It draws the first
// kReadablePredictors of them, by the transforms of its data; without these it draws all. Returns
// the document itself where it is no such chart. Throws nlohmann::json::exception for one that only
// looks like it.
nlohmann::ordered_json ReadableChart(const nlohmann::ordered_json& chart);

}  // namespace MCHost
