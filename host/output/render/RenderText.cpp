#include "host/output/render/RenderText.h"

#include <algorithm>
#include <vector>

#include "host/output/OutputDocument.h"
#include "host/output/ShowText.h"
#include "host/output/render/DisplayWidth.h"
#include "host/output/render/FlatText.h"
#include "host/output/render/TableAxis.h"
#include "host/output/render/TextTable.h"
#include "host/text/VisibleText.h"

namespace MCHost {
namespace {

constexpr const char* kBold = "1";
constexpr const char* kRed = "1;31";
constexpr const char* kYellow = "1;33";

// Writes one page. Blocks (messages, notes, a table, ...) are parted by an empty line.
class PageWriter {
 public:
  explicit PageWriter(const TextOptions& options) : fOptions(options) {}

  void Run(const OutputRun& run);
  // Above the results of one of several commands.
  void Heading(const std::string& text);
  void Message(const OutputMessage& message);
  const std::string& Page() const { return fPage; }

 private:
  // Those that the page does not have yet.
  void Notes(const std::vector<OutputNote>& all);
  void Table(const OutputTable& table);
  void Results(const OutputRun& run);

  void BeginBlock();
  void Title(const std::string& title);
  // A text wrapped beside its lead, which the first line carries and the others leave blank.
  // `flat`: no wider than a flat table.
  void Hanging(const std::string& lead, const std::string& text, bool flat = false);
  std::string Styled(const std::string& text, const char* style) const;

  const TextOptions& fOptions;
  std::string fPage;
  std::vector<OutputNote> fNotes;  // shown so far
};

void PageWriter::Run(const OutputRun& run) {
  if (fOptions.fbMessages && !run.fMessages.empty()) {
    BeginBlock();
    for (const OutputMessage& message : run.fMessages) Message(message);
  }
  Notes(run.fNotes);
  for (const OutputTable& table : run.fTables) {
    if (!table.fbForPrograms) Table(table);
  }
  for (const OutputChart& chart : run.fCharts) {
    BeginBlock();
    Title(KeyText("^1 (chart)", {ShowText(chart.fTitle)}));
    Hanging("", KeyText("The JSON output holds this chart as a Vega-Lite document."));
  }
  Results(run);
}

void PageWriter::Message(const OutputMessage& message) {
  const bool error = message.fLevel >= OutputMessage::kError;
  const std::string severity = KeyText(error ? "Error:" : "Warning:") + " ";
  const std::size_t start = fPage.size();
  Hanging(severity, ShowText(message.fText));
  fPage.replace(start, severity.size(), Styled(severity, error ? kRed : kYellow));
  if (message.fDetail.empty()) return;
  // A source line and its caret must not be wrapped.
  std::string detail = "  " + VisibleText(message.fDetail, "\n\t");
  for (std::size_t at = 0; (at = detail.find('\n', at)) != std::string::npos; at += 3) {
    detail.replace(at, 1, "\n  ");
  }
  fPage += detail + "\n";
}

void PageWriter::Heading(const std::string& text) {
  BeginBlock();
  std::string line = "── " + VisibleText(text, "") + " ";
  const std::size_t width = FlatText::WidthOn(fOptions.fWidth);
  for (std::size_t used = DisplayWidth(line); used < width; ++used) line += "─";
  Title(line);
}

void PageWriter::Notes(const std::vector<OutputNote>& all) {
  std::vector<OutputNote> notes;
  for (const OutputNote& note : all) {
    if (std::ranges::find(fNotes, note) == fNotes.end()) notes.push_back(note);
  }
  if (notes.empty()) return;
  fNotes.insert(fNotes.end(), notes.begin(), notes.end());
  BeginBlock();
  Title(KeyText("Notes"));
  std::size_t width = 0;
  for (const OutputNote& note : notes) {
    const std::string title = VisibleText(ShowText(note.fTitle), "");
    width = std::max(width, DisplayWidth(title) + (note.fGroup ? 2 : 0));
  }
  width = std::min(width, fOptions.fWidth / 2);
  std::string group;
  for (const OutputNote& note : notes) {
    const std::string heading = note.fGroup ? ShowText(*note.fGroup) : "";
    if (heading != group && !heading.empty()) fPage += "  " + VisibleText(heading, "") + "\n";
    group = heading;
    std::string lead = (heading.empty() ? "  " : "    ") + VisibleText(ShowText(note.fTitle), "");
    const std::size_t used = DisplayWidth(lead);
    lead.append(width + 4 > used ? width + 4 - used : 2, ' ');
    Hanging(lead, ShowText(note.fText));
  }
}

void PageWriter::Table(const OutputTable& table) {
  BeginBlock();
  Title(ShowText(table.fTitle));
  fPage += table.fbFlat ? FlatText(table, fOptions.fWidth, fOptions.fbBlocks).Draw()
                        : TextTable(table, fOptions.fWidth).Draw();
  if (table.fCaption && table.fbFlat && !table.fCells.empty()) fPage += "\n";
  if (table.fCaption) Hanging("", ShowText(*table.fCaption), table.fbFlat);
  for (std::size_t i = 0; i < table.fFootnotes.size(); ++i) {
    const std::string mark = FootnoteMarks({static_cast<int>(i)}).substr(1);
    Hanging(mark + " ", ShowText(table.fFootnotes[i]), table.fbFlat);
  }
}

void PageWriter::Results(const OutputRun& run) {
  if (run.fMacros.empty() && run.fNewVariables.empty() && run.fFiles.empty()) return;
  BeginBlock();
  for (const auto& [name, values] : run.fMacros) {
    std::string list;
    for (const std::string& value : values) list += (list.empty() ? "" : " ") + value;
    Hanging("!" + name + " = ", list.empty() ? KeyText("(empty)") : list);
  }
  for (const OutputVariable& variable : run.fNewVariables) {
    Hanging(KeyText("New variable ^1:", {variable.fName}) + " ", variable.fLabel);
  }
  for (const std::string& file : run.fFiles) Hanging(KeyText("File written:") + " ", file);
}

void PageWriter::BeginBlock() {
  if (!fPage.empty()) fPage += "\n";
}

void PageWriter::Title(const std::string& title) {
  fPage += Styled(VisibleText(title), kBold) + "\n";
}

void PageWriter::Hanging(const std::string& lead, const std::string& text, bool flat) {
  const std::size_t width = flat ? FlatText::WidthOn(fOptions.fWidth) : fOptions.fWidth;
  std::string margin = VisibleText(lead, "");
  const std::size_t indent = DisplayWidth(margin);
  const std::size_t room = width > indent + 20 ? width - indent : 20;
  for (const std::string& line : WrapText(VisibleText(text), room)) {
    fPage += margin + line + "\n";
    margin.assign(indent, ' ');
  }
}

std::string PageWriter::Styled(const std::string& text, const char* style) const {
  return fOptions.fbColor ? std::string("\x1b[") + style + "m" + text + "\x1b[0m" : text;
}

}  // namespace

std::string RenderText(const OutputDocument& document, const TextOptions& options) {
  PageWriter writer(options);
  const std::vector<OutputRun>& runs = document.GetRuns();
  for (std::size_t i = 0; i < runs.size(); ++i) {
    const std::string number = std::to_string(i + 1);
    if (runs.size() > 1) writer.Heading(KeyText("Command ^1: ^2", {number, runs[i].fCommand}));
    writer.Run(runs[i]);
  }
  return writer.Page();
}

std::string RenderMessage(const OutputMessage& message, const TextOptions& options) {
  PageWriter writer(options);
  writer.Message(message);
  return writer.Page();
}

}  // namespace MCHost
