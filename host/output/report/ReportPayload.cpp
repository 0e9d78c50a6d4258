#include "host/output/report/ReportPayload.h"

#include <map>
#include <utility>
#include <vector>

#include "common/MissingValue.h"
#include "host/output/OutputDocument.h"
#include "host/output/ShowText.h"
#include "host/output/render/TableAxis.h"
#include "host/output/report/ReadableChart.h"

namespace MCHost {

namespace {

using Json = nlohmann::ordered_json;

constexpr OutputDimension::Axis kAxes[] = {OutputDimension::kRow, OutputDimension::kColumn,
                                           OutputDimension::kLayer};

Json Headings(const std::vector<AxisEntry>& entries) {
  Json headings = Json::array();
  for (const AxisEntry& entry : entries) {
    Json own = Json::array();
    for (const AxisEntry::Heading& heading : entry.fHeadings) own.push_back(heading.fText);
    headings.push_back(std::move(own));
  }
  return headings;
}

Json Cell(const OutputCell& cell, std::size_t row, std::size_t column, std::size_t layer) {
  Json json = {row, column, layer};
  if (const auto* number = std::get_if<double>(&cell.fValue)) {
    json.push_back(MCMV::IsMissing(*number) ? Json(nullptr) : Json(*number));
    json.push_back(FormatNumber(*number, cell.fFormat));
  } else {
    const auto* text = std::get_if<OutputText>(&cell.fValue);
    json.push_back(nullptr);
    json.push_back(text == nullptr ? "" : ShowText(*text));
  }
  if (!cell.fNotes.empty()) json.push_back(FootnoteMarks(cell.fNotes));
  return json;
}

Json Cells(const OutputTable& table, const std::vector<AxisEntry> (&entries)[3]) {
  std::map<std::vector<int>, const OutputCell*> byPlace;
  for (const OutputCell& cell : table.fCells) byPlace[cell.fPlace] = &cell;
  Json cells = Json::array();
  for (std::size_t layer = 0; layer < entries[2].size(); ++layer) {
    for (std::size_t row = 0; row < entries[0].size(); ++row) {
      for (std::size_t column = 0; column < entries[1].size(); ++column) {
        const auto found =
            byPlace.find(CellPlace(table, entries[0][row], entries[1][column], entries[2][layer]));
        if (found != byPlace.end()) cells.push_back(Cell(*found->second, row, column, layer));
      }
    }
  }
  return cells;
}

Json Table(const OutputTable& table) {
  Json json = {{"title", ShowText(table.fTitle)}, {"subtype", table.fSubtype}};
  if (table.fCaption) json["caption"] = ShowText(*table.fCaption);
  constexpr const char* kNames[] = {"row_names", "column_names", "layer_names"};
  constexpr const char* kEntries[] = {"rows", "columns", "layers"};
  std::vector<AxisEntry> entries[3];
  for (std::size_t axis = 0; axis < 3; ++axis) {
    entries[axis] = AxisEntries(table, kAxes[axis]);
    json[kNames[axis]] = Json::array();
    for (const std::size_t dimension : AxisDimensions(table, kAxes[axis])) {
      json[kNames[axis]].push_back(ShowText(table.fDimensions[dimension].fName));
    }
    json[kEntries[axis]] = Headings(entries[axis]);
  }
  json["cells"] = Cells(table, entries);
  json["footnotes"] = Json::array();
  for (std::size_t i = 0; i < table.fFootnotes.size(); ++i) {
    json["footnotes"].push_back(
        {FootnoteLetter(static_cast<int>(i)), ShowText(table.fFootnotes[i])});
  }
  return json;
}

Json Message(const OutputMessage& message) {
  return {{"severity", SeverityName(message.fLevel)},
          {"text", ShowText(message.fText)},
          {"detail", message.fDetail}};
}

Json Note(const OutputNote& note) {
  return {{"group", note.fGroup ? ShowText(*note.fGroup) : ""},
          {"title", ShowText(note.fTitle)},
          {"text", ShowText(note.fText)}};
}

Json Run(const OutputRun& run) {
  Json json = {{"command", run.fCommand}, {"completed", run.fbCompleted}};
  for (const char* list : {"messages", "notes", "tables", "charts", "new_variables"}) {
    json[list] = Json::array();
  }
  for (const OutputMessage& message : run.fMessages) json["messages"].push_back(Message(message));
  for (const OutputNote& note : run.fNotes) json["notes"].push_back(Note(note));
  for (const OutputTable& table : run.fTables) {
    if (!table.fbForPrograms) json["tables"].push_back(Table(table));
  }
  for (const OutputChart& chart : run.fCharts) {
    json["charts"].push_back(
        {{"title", ShowText(chart.fTitle)}, {"spec", ReadableChart(Json::parse(chart.fVegaLite))}});
  }
  for (const OutputVariable& variable : run.fNewVariables) {
    json["new_variables"].push_back({variable.fName, variable.fLabel});
  }
  json["files"] = run.fFiles;
  json["findings"] = run.fFindings.empty() ? Json(nullptr) : Json::parse(run.fFindings);
  return json;
}

}  // namespace

Json ReportPayload(const OutputDocument& document, const std::string& heading) {
  Json json = {{"version", document.fVersion},      {"heading", heading},
               {"source", document.fDataSource},    {"cases", document.fNCases},
               {"variables", document.fNVariables}, {"runs", Json::array()}};
  for (const OutputRun& run : document.GetRuns()) json["runs"].push_back(Run(run));
  return json;
}

}  // namespace MCHost
