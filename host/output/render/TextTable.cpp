#include "host/output/render/TextTable.h"

#include <algorithm>
#include <memory>
#include <numeric>

#include "host/output/ShowText.h"
#include "host/output/render/BoxCanvas.h"
#include "host/output/render/DisplayWidth.h"
#include "host/text/VisibleText.h"

namespace MCHost {
namespace {

constexpr std::size_t kPadding = 2;        // a blank on either side of a text
constexpr std::size_t kBorder = 1;         // one line between neighbours
constexpr std::size_t kHeadingWidth = 18;  // headings up to here are not wrapped
constexpr std::size_t kLeastLabel = 12;    // row labels are not made narrower for the columns
constexpr std::size_t kLeastRoom = 20;     // for a column, however wide the row labels are
constexpr std::size_t kPointsPerGlyph = 8;
constexpr std::size_t kNoSeparator = static_cast<std::size_t>(-1);

std::size_t Sum(const std::vector<std::size_t>& widths, std::size_t from, std::size_t to) {
  return std::accumulate(widths.begin() + static_cast<std::ptrdiff_t>(from),
                         widths.begin() + static_cast<std::ptrdiff_t>(to), std::size_t{0});
}

// Texts over several columns may use the borders and blanks between them.
std::size_t SpanWidth(const std::vector<std::size_t>& widths, std::size_t from, std::size_t to) {
  return Sum(widths, from, to) + (to - from - 1) * (kPadding + kBorder);
}

std::size_t HeadingWidth(const std::string& text) {
  return std::max(LongestWord(text), std::min(LongestLine(text), kHeadingWidth));
}

enum class Align { kLeft, kCenter, kRight };

void PutAligned(BoxCanvas& canvas, std::size_t x, std::size_t y, std::size_t width,
                const std::string& text, Align align) {
  const std::size_t used = DisplayWidth(text);
  const std::size_t room = width > used ? width - used : 0;
  const std::size_t shift = align == Align::kLeft ? 0 : align == Align::kCenter ? room / 2 : room;
  canvas.Put(x + shift, y, text);
}

}  // namespace

// One drawing: some of the columns, beside all row labels.
struct TextTable::Panel {
  const AxisEntry& fLayer;
  std::vector<AxisEntry> fColumns;
  std::vector<std::size_t> fWidths;  // row label levels, then columns
  std::vector<std::size_t> fXs;      // vertical lines: one before each width, one at the end
  std::vector<bool> fbNumbers;       // a column: whether its cells are numbers
  std::vector<Block> fHeader;
  std::vector<std::size_t> fHeaderYs;  // horizontal lines: one above each level, one below all
  std::vector<std::size_t> fRowYs;     // first line of each row
  std::vector<std::size_t> fRowHeights;
  std::vector<std::size_t> fSeparators;  // above each row: the label level it starts at, or none
  std::size_t fBottom = 0;
  std::unique_ptr<BoxCanvas> fpCanvas;
};

TextTable::TextTable(const OutputTable& table, std::size_t pageWidth)
    : fTable(table),
      fPageWidth(pageWidth),
      fRows(AxisEntries(table, OutputDimension::kRow)),
      fColumns(AxisEntries(table, OutputDimension::kColumn)),
      fRowDepth(AxisDepth(fRows)),
      fColumnDepth(AxisDepth(fColumns)) {
  for (const OutputCell& cell : table.fCells) {
    ShownCell shown;
    if (const auto* number = std::get_if<double>(&cell.fValue)) {
      shown = {FormatNumber(*number, cell.fFormat), true};
    } else if (const auto* text = std::get_if<OutputText>(&cell.fValue)) {
      shown.fText = VisibleText(ShowText(*text));
    } else {
      shown.fbNumber = true;
    }
    const std::string marks = FootnoteMarks(cell.fNotes);
    shown.fText += shown.fText.empty() && !marks.empty() ? marks.substr(1) : marks;
    fCells[cell.fPlace] = std::move(shown);
  }
  for (const std::size_t dimension : AxisDimensions(table, OutputDimension::kRow)) {
    if (!fCorner.empty()) fCorner += " / ";
    fCorner += ShowText(table.fDimensions[dimension].fName);
  }
  MeasureLabels();
  NarrowLabels();
}

std::string TextTable::Draw() const {
  std::string drawn;
  if (fRows.empty() || fColumns.empty()) return drawn;
  for (const AxisEntry& layer : AxisEntries(fTable, OutputDimension::kLayer)) {
    for (const AxisEntry::Heading& heading : layer.fHeadings) {
      const auto dimension = static_cast<std::size_t>(heading.fDimension);
      drawn += ShowText(fTable.fDimensions[dimension].fName) + ": " + heading.fText + "\n";
    }
    drawn += DrawLayer(layer);
  }
  return drawn;
}

std::string TextTable::DrawLayer(const AxisEntry& layer) const {
  const std::vector<std::size_t> widths = MeasureColumns(layer);
  std::string drawn;
  for (std::size_t first = 0; first < fColumns.size();) {
    const std::size_t next = PanelEnd(widths, first);
    std::vector<std::size_t> panel(widths.size(), 0);
    for (std::size_t i = first; i < next; ++i) panel[i] = widths[i];
    drawn += DrawPanel(layer, panel);
    first = next;
  }
  return drawn;
}

// As many columns as fit beside the row labels, at least one. A group of columns that would be cut
// off goes to the next panel as a whole, unless this one would have nothing else.
std::size_t TextTable::PanelEnd(const std::vector<std::size_t>& widths, std::size_t first) const {
  std::size_t used = Sum(fLabelWidths, 0, fRowDepth) + fRowDepth * (kPadding + kBorder) + kBorder;
  std::size_t end = first;
  while (end < widths.size()) {
    used += widths[end] + kPadding + kBorder;
    if (end > first && used > fPageWidth) break;
    ++end;
  }
  std::size_t start = end;
  while (start > first && start < widths.size() &&
         ShareHeading(fColumns[start - 1], fColumns[start], 0)) {
    --start;
  }
  return start > first ? start : end;
}

std::string TextTable::DrawPanel(const AxisEntry& layer,
                                 const std::vector<std::size_t>& columns) const {
  Panel panel{layer, {}, fLabelWidths, {0}, {}, {}, {}, {}, {}, {}, 0, nullptr};
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i] == 0) continue;
    panel.fColumns.push_back(fColumns[i]);
    panel.fWidths.push_back(columns[i]);
  }
  // A heading that another panel continues must keep its words whole here too.
  for (const Block& block : Blocks(panel.fColumns, fColumnDepth)) {
    const std::size_t end = fRowDepth + block.fTo;
    const std::size_t room = SpanWidth(panel.fWidths, fRowDepth + block.fFrom, end);
    const std::size_t word = std::min(LongestWord(block.fText), MostOfAColumn());
    if (word > room) panel.fWidths[end - 1] += word - room;
  }
  PlaceColumns(panel);
  PlaceHeader(panel);
  PlaceBody(panel);
  panel.fpCanvas = std::make_unique<BoxCanvas>(panel.fXs.back() + 1, panel.fBottom + 1);
  DrawHeader(panel);
  DrawRowLabels(panel);
  DrawSeparators(panel);
  DrawCells(panel);
  return panel.fpCanvas->ToString();
}

std::vector<TextTable::Block> TextTable::Blocks(const std::vector<AxisEntry>& entries,
                                                std::size_t depth) {
  std::vector<Block> blocks;
  for (std::size_t level = 0; level < depth; ++level) {
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (level >= entries[i].fHeadings.size()) continue;
      const bool own = level + 1 == entries[i].fHeadings.size();
      if (!own && i > 0 && ShareHeading(entries[i - 1], entries[i], level)) {
        blocks.back().fTo = i + 1;
        continue;
      }
      blocks.push_back(
          {entries[i].fHeadings[level].fText, i, i + 1, level, own ? depth : level + 1});
    }
  }
  return blocks;
}

void TextTable::PlaceColumns(Panel& panel) const {
  for (const AxisEntry& column : panel.fColumns) {
    panel.fbNumbers.push_back(std::any_of(fRows.begin(), fRows.end(), [&](const AxisEntry& row) {
      const ShownCell* cell = FindCell(row, column, panel.fLayer);
      return cell != nullptr && cell->fbNumber;
    }));
  }
  for (const std::size_t width : panel.fWidths) {
    panel.fXs.push_back(panel.fXs.back() + width + kPadding + kBorder);
  }
}

void TextTable::PlaceHeader(Panel& panel) const {
  panel.fHeader = Blocks(panel.fColumns, fColumnDepth);
  std::vector<std::size_t> heights(fColumnDepth, 1);
  for (const Block& block : panel.fHeader) {
    const std::size_t width =
        SpanWidth(panel.fWidths, fRowDepth + block.fFrom, fRowDepth + block.fTo);
    const std::size_t lines = WrapText(block.fText, width).size();
    const std::size_t room = Sum(heights, block.fLevel, block.fLevelEnd) +
                             (block.fLevelEnd - block.fLevel - 1) * kBorder;
    if (lines > room) heights[block.fLevelEnd - 1] += lines - room;
  }
  panel.fHeaderYs.push_back(0);
  for (const std::size_t height : heights) {
    panel.fHeaderYs.push_back(panel.fHeaderYs.back() + height + kBorder);
  }
}

void TextTable::PlaceBody(Panel& panel) const {
  panel.fRowHeights.assign(fRows.size(), 1);
  bool tall = false;
  for (std::size_t row = 0; row < fRows.size(); ++row) {
    for (std::size_t i = 0; i < panel.fColumns.size(); ++i) {
      const ShownCell* cell = FindCell(fRows[row], panel.fColumns[i], panel.fLayer);
      if (cell == nullptr) continue;
      const std::size_t lines = WrapText(cell->fText, panel.fWidths[fRowDepth + i]).size();
      panel.fRowHeights[row] = std::max(panel.fRowHeights[row], lines);
      tall = tall || lines > 1;
    }
  }
  for (const Block& block : Blocks(fRows, fRowDepth)) {
    const std::size_t width = SpanWidth(panel.fWidths, block.fLevel, block.fLevelEnd);
    const std::size_t lines = WrapText(block.fText, width).size();
    const std::size_t room = Sum(panel.fRowHeights, block.fFrom, block.fTo);
    if (lines > room) panel.fRowHeights[block.fTo - 1] += lines - room;
  }
  std::size_t y = panel.fHeaderYs.back() + 1;
  for (std::size_t row = 0; row < fRows.size(); ++row) {
    std::size_t level = kNoSeparator;
    if (row > 0) {
      const AxisEntry& above = fRows[row - 1];
      const AxisEntry& below = fRows[row];
      level = 0;
      while (ShareHeading(above, below, level)) ++level;
      const bool grouped = level + 1 < std::max(above.fHeadings.size(), below.fHeadings.size());
      if (!grouped && !tall) level = kNoSeparator;
    }
    if (level != kNoSeparator) ++y;
    panel.fSeparators.push_back(level);
    panel.fRowYs.push_back(y);
    y += panel.fRowHeights[row];
  }
  panel.fBottom = y;
}

void TextTable::DrawHeader(const Panel& panel) const {
  BoxCanvas& canvas = *panel.fpCanvas;
  const std::size_t right = panel.fXs.back();
  const std::size_t bottom = panel.fHeaderYs.back();
  canvas.HorizontalLine(0, 0, right);
  canvas.HorizontalLine(bottom, 0, right);
  canvas.VerticalLine(0, 0, bottom);
  if (fRowDepth > 0 && fColumnDepth > 0) {
    const std::size_t width = SpanWidth(panel.fWidths, 0, fRowDepth);
    PutAligned(canvas, 2, bottom - 1, width, WrapText(fCorner, width).front(), Align::kLeft);
  }
  for (const Block& block : panel.fHeader) {
    const std::size_t x = panel.fXs[fRowDepth + block.fFrom];
    const std::size_t end = panel.fXs[fRowDepth + block.fTo];
    const std::size_t top = panel.fHeaderYs[block.fLevel];
    const std::size_t below = panel.fHeaderYs[block.fLevelEnd];
    canvas.HorizontalLine(below, x, end);
    canvas.VerticalLine(x, top, below);
    canvas.VerticalLine(end, top, below);
    const std::size_t width = end - x - 1 - kPadding;
    const std::vector<std::string> lines = WrapText(block.fText, width);
    Align align = panel.fbNumbers[block.fFrom] ? Align::kRight : Align::kLeft;
    if (block.fLevelEnd < fColumnDepth) align = Align::kCenter;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      PutAligned(canvas, x + 2, below - lines.size() + i, width, lines[i], align);
    }
  }
}

void TextTable::DrawRowLabels(const Panel& panel) const {
  BoxCanvas& canvas = *panel.fpCanvas;
  for (const Block& block : Blocks(fRows, fRowDepth)) {
    const std::size_t x = panel.fXs[block.fLevel];
    const std::size_t top = panel.fRowYs[block.fFrom] - 1;
    const std::size_t end = panel.fRowYs[block.fTo - 1] + panel.fRowHeights[block.fTo - 1];
    canvas.VerticalLine(x, top, end);
    const std::size_t width = SpanWidth(panel.fWidths, block.fLevel, block.fLevelEnd);
    const std::vector<std::string> lines = WrapText(block.fText, width);
    for (std::size_t i = 0; i < lines.size(); ++i) canvas.Put(x + 2, top + 1 + i, lines[i]);
  }
}

void TextTable::DrawSeparators(const Panel& panel) const {
  BoxCanvas& canvas = *panel.fpCanvas;
  const std::size_t right = panel.fXs.back();
  for (std::size_t i = fRowDepth; i < panel.fXs.size(); ++i) {
    canvas.VerticalLine(panel.fXs[i], panel.fHeaderYs.back(), panel.fBottom);
  }
  canvas.VerticalLine(0, panel.fHeaderYs.back(), panel.fBottom);
  canvas.HorizontalLine(panel.fBottom, 0, right);
  for (std::size_t row = 0; row < fRows.size(); ++row) {
    const std::size_t level = panel.fSeparators[row];
    if (level != kNoSeparator)
      canvas.HorizontalLine(panel.fRowYs[row] - 1, panel.fXs[level], right);
  }
}

void TextTable::DrawCells(const Panel& panel) const {
  for (std::size_t row = 0; row < fRows.size(); ++row) {
    for (std::size_t i = 0; i < panel.fColumns.size(); ++i) {
      const ShownCell* cell = FindCell(fRows[row], panel.fColumns[i], panel.fLayer);
      if (cell == nullptr) continue;
      const std::size_t width = panel.fWidths[fRowDepth + i];
      const std::vector<std::string> lines = WrapText(cell->fText, width);
      for (std::size_t line = 0; line < lines.size(); ++line) {
        PutAligned(*panel.fpCanvas, panel.fXs[fRowDepth + i] + 2, panel.fRowYs[row] + line, width,
                   lines[line], cell->fbNumber ? Align::kRight : Align::kLeft);
      }
    }
  }
}

void TextTable::MeasureLabels() {
  const std::size_t levels = std::max<std::size_t>(fRowDepth, 1);
  const std::size_t cap = std::max<std::size_t>(12, fPageWidth * 2 / 5 / levels);
  fLabelWidths.assign(fRowDepth, 1);
  for (const Block& block : Blocks(fRows, fRowDepth)) {
    const std::size_t levelsSpanned = block.fLevelEnd - block.fLevel;
    const std::size_t word = LongestWord(block.fText);  // one that must be broken asks for nothing
    const std::size_t most = std::max(cap * levelsSpanned, word <= 2 * cap ? word : 0);
    const std::size_t wanted = std::min(LongestLine(block.fText), most);
    const std::size_t room = SpanWidth(fLabelWidths, block.fLevel, block.fLevelEnd);
    if (wanted > room) fLabelWidths[block.fLevelEnd - 1] += wanted - room;
  }
  if (fRowDepth == 0) return;
  const std::size_t room = SpanWidth(fLabelWidths, 0, fRowDepth);
  const std::size_t wanted = std::min(LongestLine(fCorner), cap * levels);
  if (wanted > room) fLabelWidths.back() += wanted - room;
}

void TextTable::NarrowLabels() {
  if (fRowDepth != 1) return;
  std::size_t least = kLeastLabel;
  for (const Block& block : Blocks(fRows, fRowDepth)) {
    least = std::max(least, LongestWord(block.fText));
  }
  std::size_t widest = 0;
  for (const AxisEntry& layer : AxisEntries(fTable, OutputDimension::kLayer)) {
    const std::vector<std::size_t> widths = MeasureColumns(layer);
    for (const Block& block : Blocks(fColumns, std::min<std::size_t>(fColumnDepth, 1))) {
      widest = std::max(widest, SpanWidth(widths, block.fFrom, block.fTo));
    }
  }
  const std::size_t used = widest + 2 * kPadding + 3 * kBorder;
  const std::size_t room = fPageWidth > used ? fPageWidth - used : 0;
  if (room >= least) fLabelWidths[0] = std::min(fLabelWidths[0], room);
}

std::size_t TextTable::RoomForColumns() const {
  const std::size_t used = Sum(fLabelWidths, 0, fRowDepth) +
                           (fRowDepth + fColumns.size()) * (kPadding + kBorder) + kBorder;
  return fPageWidth > used ? fPageWidth - used : 0;
}

std::size_t TextTable::MostOfAColumn() const {
  const std::size_t labels =
      Sum(fLabelWidths, 0, fRowDepth) + (fRowDepth + 1) * (kPadding + kBorder) + kBorder;
  return std::max(kLeastRoom, fPageWidth > labels ? fPageWidth - labels : 0);
}

// A table that is too wide for the page gives up its wishes before it is cut into panels: first the
// least width, then columns become as narrow as their longest words, where that makes it fit.
std::vector<std::size_t> TextTable::MeasureColumns(const AxisEntry& layer) const {
  const auto least = static_cast<std::size_t>(fTable.fMinDataColumnWidth) / kPointsPerGlyph;
  std::vector<std::size_t> wished = ColumnWidths(layer, least, &LongestLine);
  const std::size_t room = RoomForColumns();
  if (Sum(wished, 0, wished.size()) <= room) return wished;
  const std::vector<std::size_t> narrowest = ColumnWidths(layer, 1, &LongestWord);
  if (Sum(narrowest, 0, narrowest.size()) > room) return wished;
  std::vector<std::size_t> widths = ColumnWidths(layer, 1, &LongestLine);
  for (std::size_t total = Sum(widths, 0, widths.size()); total > room; --total) {
    std::size_t widest = 0;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      const bool mayShrink = widths[i] > narrowest[i];
      const bool isFirst = widths[widest] <= narrowest[widest];
      if (mayShrink && (isFirst || widths[i] > widths[widest])) widest = i;
    }
    --widths[widest];
  }
  return widths;
}

std::vector<std::size_t> TextTable::ColumnWidths(const AxisEntry& layer, std::size_t least,
                                                 std::size_t (*measure)(const std::string&)) const {
  std::vector<std::size_t> widths;
  for (const AxisEntry& column : fColumns) {
    std::size_t width = std::max<std::size_t>(least, 1);
    if (!column.fHeadings.empty()) {
      const std::string& heading = column.fHeadings.back().fText;
      width = std::max(width, std::min(measure(heading), HeadingWidth(heading)));
    }
    for (const AxisEntry& row : fRows) {
      const ShownCell* cell = FindCell(row, column, layer);
      if (cell != nullptr) width = std::max(width, measure(cell->fText));
    }
    widths.push_back(std::min(width, MostOfAColumn()));
  }
  WidenForGroups(widths, measure);
  return widths;
}

void TextTable::WidenForGroups(std::vector<std::size_t>& widths,
                               std::size_t (*measure)(const std::string&)) const {
  for (const Block& block : Blocks(fColumns, fColumnDepth)) {
    const std::size_t room = SpanWidth(widths, block.fFrom, block.fTo);
    const std::size_t wanted =
        std::min({measure(block.fText), HeadingWidth(block.fText), MostOfAColumn()});
    if (wanted > room) widths[block.fTo - 1] += wanted - room;
  }
}

const TextTable::ShownCell* TextTable::FindCell(const AxisEntry& row, const AxisEntry& column,
                                                const AxisEntry& layer) const {
  const auto found = fCells.find(CellPlace(fTable, row, column, layer));
  return found == fCells.end() ? nullptr : &found->second;
}

}  // namespace MCHost
