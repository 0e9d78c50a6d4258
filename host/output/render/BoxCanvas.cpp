#include "host/output/render/BoxCanvas.h"

#include "host/output/render/DisplayWidth.h"

namespace MCHost {
namespace {

enum Arm : unsigned { kUp = 1, kRight = 2, kDown = 4, kLeft = 8 };

constexpr const char* kBoxes[] = {" ", "╵", "╶", "└", "╷", "│", "┌", "├",
                                  "╴", "┘", "─", "┴", "┐", "┤", "┬", "┼"};

}  // namespace

BoxCanvas::BoxCanvas(std::size_t width, std::size_t height)
    : fWidth(width), fHeight(height), fCells(width * height) {}

void BoxCanvas::HorizontalLine(std::size_t y, std::size_t from, std::size_t to) {
  for (std::size_t x = from; x <= to; ++x) {
    if (x > from) At(x, y).fArms |= kLeft;
    if (x < to) At(x, y).fArms |= kRight;
  }
}

void BoxCanvas::VerticalLine(std::size_t x, std::size_t from, std::size_t to) {
  for (std::size_t y = from; y <= to; ++y) {
    if (y > from) At(x, y).fArms |= kUp;
    if (y < to) At(x, y).fArms |= kDown;
  }
}

void BoxCanvas::Put(std::size_t x, std::size_t y, const std::string& text) {
  std::size_t at = 0;
  std::size_t last = x;
  while (at < text.size()) {
    const std::size_t bytes = GlyphBytes(text, at);
    const std::string glyph = text.substr(at, bytes);
    const std::size_t width = DisplayWidth(glyph);
    if (x + width > fWidth) return;
    at += bytes;
    if (width == 0) {
      At(last, y).fGlyph += glyph;
      continue;
    }
    At(x, y).fGlyph = glyph;
    for (std::size_t i = 1; i < width; ++i) At(x + i, y).fbCovered = true;
    last = x;
    x += width;
  }
}

std::string BoxCanvas::ToString() const {
  std::string sheet;
  for (std::size_t y = 0; y < fHeight; ++y) {
    std::string line;
    for (std::size_t x = 0; x < fWidth; ++x) {
      const Cell& cell = At(x, y);
      if (cell.fbCovered) continue;
      line += cell.fGlyph.empty() ? kBoxes[cell.fArms] : cell.fGlyph;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    sheet += line + "\n";
  }
  return sheet;
}

}  // namespace MCHost
