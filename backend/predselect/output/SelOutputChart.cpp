// The predictor summary as a chart.
#include <algorithm>
#include <vector>

#include "backend/predselect/output/SelOutput.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "feature/FSCriterion.h"
#include "host/output/FacSTDictionary.h"
#include "host/output/ShowText.h"
#include "host/output/TellApart.h"
#include "host/output/chart/ChartString.h"
#include "host/output/chart/XDocument.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpVariable.h"

void SelOutput::ChartPredSummary() const {
  if (!fpValidSpecs->GetPlotSummary()) return;
  const PRSSelection selection = Selection();
  if (selection.fIndices.empty()) return;
  FacSTDictionary texts;
  texts.SetGlobalStringTable();
  texts.SetProcedure(fpProcedure->GetName());
  const FSCriterion& criterion = FSCriterion::Of(selection.fCriterion);
  const bool significance = criterion.HasSignificance();
  XVariable color(XVariable::kCategorical, texts.Lookup("Predictors"));
  color.addRelabel(0, texts.Lookup("Selected"));
  color.addRelabel(1, texts.Lookup("Unselected"));
  XVariable x(XVariable::kCategorical, texts.Lookup("Predictor"));
  XVariable y(XVariable::kScale,
              texts.Lookup(significance ? "Unadjusted Significance" : criterion.fHeading));
  y.SetNumberFormat(XVariable::kThreeDecimals);
  XDocument chart("Predictor Summary Chart", XGraph(std::move(x), std::move(y)));
  XGraph& graph = chart.GetGraph();
  graph.GetElement().colorByVariable(color);
  const int n = static_cast<int>(selection.fIndices.size());
  std::vector<MCHost::OutputText> predictors;
  for (const int index : selection.fIndices) predictors.push_back(BpVariable(Predictor(index)));
  MCHost::TellApart(predictors);
  for (int i = 0; i < n; ++i) {
    const auto place = static_cast<std::size_t>(i);
    graph.GetXVariable().addRelabel(i, MCHost::ShowText(predictors[place]));
    graph.GetElement().AddPoint(i, selection.fValues[place], i < selection.fNSelected ? 0 : 1);
  }
  chart.SetFrameHeight(std::max(1.0, n / 20.0));
  graph.GetXAxis().SetTickFontSize(n >= 19 ? 8 : 12);
  graph.GetXAxis().SetMargins(0.1, 0.1);
  graph.GetXAxis().HideLabel();
  graph.GetYAxis().SetMargins(0.0, 0.05);
  graph.GetYAxis().SetNice(true);
  graph.GetYAxis().SetInterval(0.0, 1.0);
  graph.GetYAxis().invertScale(1.0);
  if (significance) {
    graph.AddYReferenceLine(fpValidSpecs->GetUniPCutOff(), "dash");
    ChartString note(texts.Lookup("The line is at p-value..."));
    chart.AddFootnote(note.append(" ").appendDouble(fpValidSpecs->GetUniPCutOff()).GetText());
  }
  if (selection.fbLimited && n > selection.fNSelected) {
    ChartString note(texts.Lookup("Unselected predictors limited..."));
    chart.AddFootnote(note.append(" ").appendInteger(n - selection.fNSelected).GetText());
  }
  chart.Show();
}
