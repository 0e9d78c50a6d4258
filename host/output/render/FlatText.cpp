#include "host/output/render/FlatText.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <utility>

#include "common/MissingValue.h"
#include "host/output/ShowText.h"
#include "host/output/render/DisplayWidth.h"
#include "host/output/render/TableAxis.h"
#include "host/text/VisibleText.h"

namespace MCHost {

namespace {

constexpr std::size_t kMostWidth = 80;
constexpr std::size_t kBlockGap = 2;
constexpr std::size_t kLeastBar = 6;
constexpr std::size_t kMostBar = 10;
constexpr std::size_t kLeastText = 14;

std::string Padded(const std::string& text, std::size_t width, bool left) {
  const std::size_t used = DisplayWidth(text);
  const std::string blanks(width > used ? width - used : 0, ' ');
  return left ? text + blanks : blanks + text;
}

// In eighths of a column.
std::string Bar(double share, std::size_t width) {
  constexpr const char* kParts[] = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
  const double size = MCMV::IsMissing(share) ? 0.0 : std::clamp(std::fabs(share), 0.0, 1.0);
  const auto eighths =
      static_cast<std::size_t>(std::lround(size * 8.0 * static_cast<double>(width)));
  std::string bar;
  for (std::size_t i = 0; i < eighths / 8; ++i) bar += "█";
  return Padded(bar + kParts[eighths % 8], width, true);
}

// The counts of a list as columns of eight heights: nothing has none, and the least of what is
// there the least one.
std::string Columns(const OutputText& list) {
  constexpr const char* kHeights[] = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
  std::vector<double> counts;
  for (const OutputText& item : list.fArguments.front().fItems) {
    counts.push_back(std::strtod(item.fKey.c_str(), nullptr));
  }
  const double most = *std::max_element(counts.begin(), counts.end());
  std::string columns;
  for (const double count : counts) {
    const double height = count > 0.0 ? std::max(std::round(8.0 * count / most), 1.0) : 0.0;
    columns += kHeights[static_cast<std::size_t>(height)];
  }
  return columns;
}

std::string ShownCell(const OutputCell& cell, OutputFormat format) {
  const auto* number = std::get_if<double>(&cell.fValue);
  const auto* text = std::get_if<OutputText>(&cell.fValue);
  std::string shown;
  if (number != nullptr) shown = FormatNumber(*number, cell.fFormat);
  if (text != nullptr) shown = VisibleText(ShowText(*text), "");
  if (text != nullptr && format == OutputFormat::kHistogram) shown = Columns(*text);
  return shown + FootnoteMarks(cell.fNotes);
}

std::string LabelOf(const OutputDimension& dimension, int category) {
  return VisibleText(ShowText(dimension.fCategories[static_cast<std::size_t>(category)].fLabel),
                     "");
}

}  // namespace

std::size_t FlatText::WidthOn(std::size_t pageWidth) { return std::min(pageWidth, kMostWidth); }

FlatText::FlatText(const OutputTable& table, std::size_t pageWidth, bool blocks) {
  const OutputDimension& rows = table.fDimensions[0];
  const OutputDimension& columns = table.fDimensions[1];
  fLabelHeading = ShowText(rows.fName);
  const std::vector<int> leaves = rows.Leaves();
  for (const int row : leaves) fLabels.push_back(LabelOf(rows, row));
  for (const int leaf : columns.Leaves()) {
    const int top = columns.PathTo(leaf).front();
    const OutputFormat format = columns.fCategories[static_cast<std::size_t>(leaf)].fFormat;
    if (!blocks && format == OutputFormat::kHistogram) continue;
    Column column = MakeColumn(table, leaf, leaves);
    if (!blocks) column.fBars.clear();
    AddColumn(LabelOf(columns, top), std::move(column), format == OutputFormat::kCount);
  }
  Fit(WidthOn(pageWidth));
}

FlatText::Column FlatText::MakeColumn(const OutputTable& table, int leaf,
                                      const std::vector<int>& rows) {
  std::map<int, const OutputCell*> byRow;
  for (const OutputCell& cell : table.fCells) {
    if (cell.fPlace[1] == leaf) byRow[cell.fPlace[0]] = &cell;
  }
  Column column;
  const auto format = table.fDimensions[1].fCategories[static_cast<std::size_t>(leaf)].fFormat;
  column.fbText = format == OutputFormat::kText || format == OutputFormat::kHistogram;
  for (const int row : rows) {
    const auto found = byRow.find(row);
    const OutputCell* cell = found == byRow.end() ? nullptr : found->second;
    column.fCells.push_back(cell == nullptr ? "" : ShownCell(*cell, format));
    column.fWidth = std::max(column.fWidth, DisplayWidth(column.fCells.back()));
    if (format != OutputFormat::kStrength) continue;
    const auto* number = cell == nullptr ? nullptr : std::get_if<double>(&cell->fValue);
    column.fBars.push_back(number == nullptr ? MCMV::gMissingValue : *number);
  }
  return column;
}

void FlatText::AddColumn(const std::string& heading, Column column, bool count) {
  if (fBlocks.empty() || fBlocks.back().fHeading != heading)
    fBlocks.push_back({heading, {}, count});
  fBlocks.back().fColumns.push_back(std::move(column));
}

std::size_t FlatText::WidthOf(const Block& block) const {
  std::size_t width = block.fColumns.size() - 1;
  for (const Column& column : block.fColumns) {
    width += column.fWidth + (column.fBars.empty() ? 0 : 1 + fBarWidth);
  }
  return std::max(width, DisplayWidth(block.fHeading));
}

std::size_t FlatText::CutWidth(const Block& block, std::size_t rest) {
  const bool isText = block.fColumns.size() == 1 && block.fColumns.front().fbText;
  const bool isEnough = rest >= std::max(kLeastText, DisplayWidth(block.fHeading));
  return isText && isEnough ? rest : 0;
}

void FlatText::Fit(std::size_t width) {
  std::size_t longest = DisplayWidth(fLabelHeading);
  for (const std::string& label : fLabels) longest = std::max(longest, DisplayWidth(label));
  fLabelWidth = std::min(longest, width / 4);
  fBarWidth = kLeastBar;
  std::size_t used = fLabelWidth;
  for (fNShown = 0; fNShown < fBlocks.size(); ++fNShown) {
    Block& block = fBlocks[fNShown];
    const std::size_t more = kBlockGap + WidthOf(block);
    if (fNShown == 0 || used + more <= width) {
      used += more;
      continue;
    }
    const std::size_t cut = CutWidth(block, width - std::min(used + kBlockGap, width));
    if (cut == 0) break;
    block.fColumns.front().fWidth = cut;
    used += kBlockGap + WidthOf(block);
  }
  const auto shownEnd = fBlocks.begin() + static_cast<std::ptrdiff_t>(fNShown);
  const bool hasBar = std::any_of(fBlocks.begin(), shownEnd, [](const Block& block) {
    return std::any_of(block.fColumns.begin(), block.fColumns.end(),
                       [](const Column& column) { return !column.fBars.empty(); });
  });
  const std::size_t left = width - std::min(used, width);
  const std::size_t label = std::min(left, longest - fLabelWidth);
  fLabelWidth += label;
  if (hasBar) fBarWidth += std::min(left - label, kMostBar - kLeastBar);
}

std::string FlatText::CellsOf(const Block& block, std::size_t row) const {
  std::string text;
  for (const Column& column : block.fColumns) {
    if (&column != &block.fColumns.front()) text += ' ';
    const std::string& cell = column.fCells[row];
    const bool isCut = DisplayWidth(cell) > column.fWidth;
    text += Padded(isCut ? ShortText(cell, column.fWidth) : cell, column.fWidth, column.fbText);
    if (!column.fBars.empty()) text += ' ' + Bar(column.fBars[row], fBarWidth);
  }
  return text;
}

std::string FlatText::Line(const std::string& label, const std::vector<std::string>& blocks) const {
  const std::string gap(kBlockGap, ' ');
  const bool isNumbered = fNShown > 0 && fBlocks.front().fbCount;
  const std::string cut = Padded(ShortText(label, fLabelWidth), fLabelWidth, true);
  std::string line = isNumbered ? "" : cut;
  for (std::size_t i = 0; i < fNShown; ++i) {
    const Block& block = fBlocks[i];
    const bool isText = block.fColumns.size() > 1 || block.fColumns.front().fbText;
    if (i > 0 || !isNumbered) line += gap;
    line += Padded(blocks[i], WidthOf(block), isText);
    if (i == 0 && isNumbered) line += gap + cut;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

std::string FlatText::Draw() const {
  if (fLabels.empty()) return "";
  std::vector<std::string> headings;
  for (const Block& block : fBlocks) headings.push_back(block.fHeading);
  const std::string first = Line(fLabelHeading, headings);
  std::size_t width = 0;
  std::string lines;
  for (std::size_t row = 0; row < fLabels.size(); ++row) {
    std::vector<std::string> blocks;
    for (const Block& block : fBlocks) blocks.push_back(CellsOf(block, row));
    const std::string line = Line(fLabels[row], blocks);
    width = std::max(width, DisplayWidth(line));
    lines += line + "\n";
  }
  width = std::max(width, DisplayWidth(first));
  std::string rule;
  for (std::size_t i = 0; i < width; ++i) rule += "─";
  return first + "\n" + rule + "\n" + lines;
}

}  // namespace MCHost
