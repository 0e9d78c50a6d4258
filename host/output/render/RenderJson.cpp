#include "host/output/render/RenderJson.h"

#include <map>
#include <nlohmann/json.hpp>

#include "host/output/FacSTDictionary.h"
#include "host/output/OutputDocument.h"
#include "host/output/ShowText.h"

namespace MCHost {
namespace {

using Json = nlohmann::ordered_json;

// Writes one document and remembers the keys that it used.
class JsonWriter {
 public:
  Json Document(const OutputDocument& document);

 private:
  Json Run(const OutputRun& run);
  Json Message(const OutputMessage& message);
  Json Note(const OutputNote& note);
  Json Table(const OutputTable& table);
  Json Dimensions(const OutputTable& table);
  Json Cell(const OutputTable& table, const OutputCell& cell);
  Json Path(const OutputTable& table, const OutputCell& cell, OutputDimension::Axis axis);
  Json Chart(const OutputChart& chart);
  Json Argument(const OutputText& argument);

  std::string Id(const OutputText& text);

  std::map<std::string, std::string> fStrings;
};

Json JsonWriter::Document(const OutputDocument& document) {
  Json json = Json::object();
  json["predselect"] = document.fVersion;
  json["data"] = {{"source", document.fDataSource},
                  {"cases", document.fNCases},
                  {"variables", document.fNVariables}};
  if (!document.fReadingNotes.empty()) json["data"]["notes"] = document.fReadingNotes;
  if (document.fFailure) {
    const OutputFailure& failure = *document.fFailure;
    json["error"] = {{"exit_code", failure.fExitCode}, {"text", failure.fText}};
    if (!failure.fFile.empty()) json["error"]["file"] = failure.fFile;
    if (!failure.fPlace.empty()) json["error"]["place"] = failure.fPlace;
  }
  json["runs"] = Json::array();
  for (const OutputRun& run : document.GetRuns()) json["runs"].push_back(Run(run));
  json["strings"] = Json::object();
  for (const auto& [key, text] : fStrings) json["strings"][key] = text;
  return json;
}

Json JsonWriter::Run(const OutputRun& run) {
  Json json = Json::object();
  json["command"] = run.fCommand;
  json["completed"] = run.fbCompleted;
  for (const char* list : {"messages", "notes", "tables", "charts"}) json[list] = Json::array();
  for (const OutputMessage& message : run.fMessages) json["messages"].push_back(Message(message));
  for (const OutputNote& note : run.fNotes) json["notes"].push_back(Note(note));
  for (const OutputTable& table : run.fTables) json["tables"].push_back(Table(table));
  for (const OutputChart& chart : run.fCharts) json["charts"].push_back(Chart(chart));
  json["macros"] = Json::object();
  for (const auto& [name, values] : run.fMacros) json["macros"][name] = values;
  json["new_variables"] = Json::array();
  for (const OutputVariable& variable : run.fNewVariables) {
    json["new_variables"].push_back({{"name", variable.fName},
                                     {"label", variable.fLabel},
                                     {"type", variable.fType},
                                     {"format", variable.fFormat}});
  }
  json["files"] = run.fFiles;
  if (!run.fFindings.empty()) json["findings"] = Json::parse(run.fFindings);
  return json;
}

Json JsonWriter::Message(const OutputMessage& message) {
  Json json = Json::object();
  json["severity"] = SeverityName(message.fLevel);
  Id(message.fText);
  json["key"] = message.fText.fKey;
  json["arguments"] = Json::array();
  for (const OutputText& argument : message.fText.fArguments) {
    json["arguments"].push_back(Argument(argument));
  }
  json["text"] = ShowText(message.fText);
  if (!message.fDetail.empty()) json["detail"] = message.fDetail;
  return json;
}

Json JsonWriter::Note(const OutputNote& note) {
  return {{"kind", note.fKind},
          {"group", note.fGroup ? Json(Id(*note.fGroup)) : Json(nullptr)},
          {"title", Id(note.fTitle)},
          {"text", Id(note.fText)}};
}

Json JsonWriter::Table(const OutputTable& table) {
  Json json = Json::object();
  json["title"] = Id(table.fTitle);
  json["subtype"] = table.fSubtype;
  json["caption"] = table.fCaption ? Json(Id(*table.fCaption)) : Json(nullptr);
  json["dimensions"] = Dimensions(table);
  json["cells"] = Json::array();
  for (const OutputCell& cell : table.fCells) json["cells"].push_back(Cell(table, cell));
  json["footnotes"] = Json::array();
  for (const OutputText& footnote : table.fFootnotes) {
    Id(footnote);
    json["footnotes"].push_back(ShowText(footnote));
  }
  return json;
}

Json JsonWriter::Dimensions(const OutputTable& table) {
  constexpr const char* kAxes[] = {"rows", "columns", "layers"};
  Json json = Json::object();
  for (const char* axis : kAxes) json[axis] = Json::array();
  for (const OutputDimension& dimension : table.fDimensions) {
    json[kAxes[dimension.fAxis]].push_back(Id(dimension.fName));
  }
  return json;
}

Json JsonWriter::Cell(const OutputTable& table, const OutputCell& cell) {
  Json json = Json::object();
  json["row"] = Path(table, cell, OutputDimension::kRow);
  json["column"] = Path(table, cell, OutputDimension::kColumn);
  json["layer"] = Path(table, cell, OutputDimension::kLayer);
  json["value"] = nullptr;
  std::string shown;
  if (const auto* number = std::get_if<double>(&cell.fValue)) {
    json["value"] = *number;
    shown = FormatNumber(*number, cell.fFormat);
  } else if (const auto* text = std::get_if<OutputText>(&cell.fValue)) {
    const bool list = text->fArguments.size() == 1 && !text->fArguments.front().fItems.empty();
    json["value"] = list ? Argument(text->fArguments.front()) : Json(Id(*text));
    shown = ShowText(*text);
  }
  json["format"] = FormatName(cell.fFormat);
  json["text"] = shown;
  json["notes"] = cell.fNotes;
  return json;
}

Json JsonWriter::Path(const OutputTable& table, const OutputCell& cell,
                      OutputDimension::Axis axis) {
  Json path = Json::array();
  for (std::size_t i = 0; i < table.fDimensions.size(); ++i) {
    const OutputDimension& dimension = table.fDimensions[i];
    if (dimension.fAxis != axis) continue;
    for (const int category : dimension.PathTo(cell.fPlace[i])) {
      path.push_back(Id(dimension.fCategories[static_cast<std::size_t>(category)].fLabel));
    }
  }
  return path;
}

Json JsonWriter::Chart(const OutputChart& chart) {
  return {{"title", Id(chart.fTitle)}, {"vegalite", Json::parse(chart.fVegaLite)}};
}

Json JsonWriter::Argument(const OutputText& argument) {
  if (argument.fItems.empty()) return Id(argument);
  Json items = Json::array();
  for (const OutputText& item : argument.fItems) items.push_back(Id(item));
  return items;
}

std::string JsonWriter::Id(const OutputText& text) {
  if (text.fKind == OutputText::kKey) {
    fStrings.try_emplace(text.fKey, FacSTDictionary().Lookup(text.fKey));
  }
  for (const OutputText& argument : text.fArguments) Id(argument);
  for (const OutputText& item : text.fItems) Id(item);
  return TextId(text);
}

}  // namespace

std::string RenderJson(const OutputDocument& document) {
  return JsonWriter().Document(document).dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace MCHost
