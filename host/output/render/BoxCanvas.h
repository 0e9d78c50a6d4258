// A sheet of terminal cells on which lines and texts are placed; lines that meet join up.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace MCHost {

class BoxCanvas {
 public:
  BoxCanvas(std::size_t width, std::size_t height);

  // Both ends belong to the line. REQUIRES: inside the sheet, from <= to.
  void HorizontalLine(std::size_t y, std::size_t from, std::size_t to);
  void VerticalLine(std::size_t x, std::size_t from, std::size_t to);

  // Places a text of one line; what goes beyond the right edge is cut off.
  void Put(std::size_t x, std::size_t y, const std::string& text);

  // The sheet, every line ended and without blanks at its end.
  std::string ToString() const;

 private:
  struct Cell {
    unsigned fArms = 0;  // of lines: 1 up, 2 right, 4 down, 8 left
    std::string fGlyph;
    bool fbCovered = false;  // by a wide glyph on its left
  };

  Cell& At(std::size_t x, std::size_t y) { return fCells[y * fWidth + x]; }
  const Cell& At(std::size_t x, std::size_t y) const { return fCells[y * fWidth + x]; }

  std::size_t fWidth;
  std::size_t fHeight;
  std::vector<Cell> fCells;
};

}  // namespace MCHost
