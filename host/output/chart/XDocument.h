// A chart under construction: a graph with its title, size and footnotes.
//
// Show() turns it into a Vega-Lite 5 document, its data inline, and hands that to the current
// session's output. Until then nothing is shown, so a chart that is given up leaves no trace.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/output/chart/XGraph.h"

class XDocument {
 public:
  // `titleKey` is a key of the string table.
  XDocument(std::string titleKey, XGraph graph)
      : fTitleKey(std::move(titleKey)), fGraph(std::move(graph)) {}

  XGraph& GetGraph() { return fGraph; }

  // Height as a multiple of the usual one.
  void SetFrameHeight(double factor) { fFrameHeight = factor; }

  void AddFootnote(std::string text) { fFootnotes.push_back(std::move(text)); }

  // The chart as a Vega-Lite document.
  std::string ToVegaLite() const;

  // Hands the chart over. REQUIRES: a session is installed for this thread.
  void Show() const;

 private:
  std::string fTitleKey;
  XGraph fGraph;
  double fFrameHeight = 1.0;
  std::vector<std::string> fFootnotes;
};
