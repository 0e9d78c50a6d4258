// What the page of a report is told: one JSON value, made of the output document.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace MCHost {

class OutputDocument;

// Tables with their headings as they are shown; a cell is [row, column, layer, value, text] and its
// footnotes, where it has any.
nlohmann::ordered_json ReportPayload(const OutputDocument& document, const std::string& heading);

}  // namespace MCHost
