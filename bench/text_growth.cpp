// How the time of a page of text grows with the length of a word that must be broken: in a cell, as
// its row label and as its column heading.

#include <string>
#include <utility>
#include <vector>

#include "bench/Growth.h"
#include "host/output/OutputDocument.h"
#include "host/output/render/RenderText.h"

namespace {

using MCHost::OutputDimension;
using MCHost::OutputText;

MCHost::OutputCategory Labelled(OutputText label) {
  MCHost::OutputCategory category;
  category.fLabel = std::move(label);
  return category;
}

// A table of one cell, with the word everywhere.
MCHost::OutputDocument Page(int length) {
  const OutputText word = OutputText::Literal(std::string(static_cast<std::size_t>(length), 'w'));
  MCHost::OutputTable table;
  for (const auto axis : {OutputDimension::kRow, OutputDimension::kColumn}) {
    OutputDimension dimension;
    dimension.fAxis = axis;
    dimension.fCategories.push_back(Labelled(word));
    table.fDimensions.push_back(std::move(dimension));
  }
  MCHost::OutputCell cell;
  cell.fPlace = {0, 0};
  cell.fValue = word;
  table.fCells.push_back(std::move(cell));
  MCHost::OutputDocument document;
  document.BeginRun("WORDS");
  document.AddTable(std::move(table));
  return document;
}

}  // namespace

int main() {
  Growth::Show("A word of so many letters in a table of text",
               {62500, 125000, 250000, 500000, 1000000}, Page,
               [](const MCHost::OutputDocument& page) { MCHost::RenderText(page, {}); });
  return 0;
}
