// The points of a chart: a category, a number and a colour each.
#pragma once

#include <vector>

class XVariable;

class XElement {
 public:
  struct Point {
    int fX = 0;
    double fY = 0.0;
    int fColor = 0;
  };

  void AddPoint(int x, double y, int color) { fPoints.push_back({x, y, color}); }
  const std::vector<Point>& GetPoints() const { return fPoints; }

  // Colours the points by a categorical variable, borrowed; its label is the legend's title.
  void colorByVariable(const XVariable& variable) { fpColor = &variable; }
  const XVariable* GetColorVariable() const { return fpColor; }

 private:
  std::vector<Point> fPoints;
  const XVariable* fpColor = nullptr;
};
