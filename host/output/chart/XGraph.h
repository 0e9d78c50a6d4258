// What a chart shows: points over two axes, and reference lines.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/output/chart/XAxis.h"
#include "host/output/chart/XElement.h"
#include "host/output/chart/XVariable.h"

class XGraph {
 public:
  struct ReferenceLine {
    double fValue;
    std::string fStyle;  // "dash", or empty for a solid line
  };

  // A categorical variable along x, a scale variable along y.
  XGraph(XVariable x, XVariable y) : fX(std::move(x)), fY(std::move(y)) {}

  XVariable& GetXVariable() { return fX; }
  const XVariable& GetXVariable() const { return fX; }
  XVariable& GetYVariable() { return fY; }
  const XVariable& GetYVariable() const { return fY; }
  XAxis& GetXAxis() { return fXAxis; }
  const XAxis& GetXAxis() const { return fXAxis; }
  XAxis& GetYAxis() { return fYAxis; }
  const XAxis& GetYAxis() const { return fYAxis; }
  XElement& GetElement() { return fElement; }
  const XElement& GetElement() const { return fElement; }

  // A horizontal line across the graph.
  void AddYReferenceLine(double value, std::string style) {
    fLines.push_back({value, std::move(style)});
  }
  const std::vector<ReferenceLine>& GetReferenceLines() const { return fLines; }

 private:
  XVariable fX;
  XVariable fY;
  XAxis fXAxis;
  XAxis fYAxis;
  XElement fElement;
  std::vector<ReferenceLine> fLines;
};
