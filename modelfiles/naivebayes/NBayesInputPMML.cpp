// A predictor in a model document.
#include <algorithm>
#include <cmath>
#include <limits>

#include "common/xml/XMLElement.h"
#include "modelfiles/naivebayes/NBDocuments.h"
#include "naivebayes/encoders/NBBinningEncoder.h"
#include "naivebayes/model/NBayesInput.h"

using MCCommonXML::XMLElement;
namespace pmml = MCModelFiles::pmml;

namespace {

// The cutpoints that separate bins with counts, each once: the document numbers such bins without
// a gap. The encoder may still have bins that its counts left empty.
std::vector<double> FindCutpoints(const NBBinningEncoder& encoder, const NBayesInputBase& counts) {
  std::vector<double> cuts = encoder.CreateRebinned(&counts)->GetBinningCutpoints();
  std::erase_if(cuts,
                [](double cut) { return std::abs(cut) == std::numeric_limits<double>::max(); });
  cuts.erase(std::unique(cuts.begin(), cuts.end()), cuts.end());
  return cuts;
}

// Bin i is (cut i-1, cut i], without a bound where there is no cutpoint.
void AddBins(XMLElement& input, const std::string& field, const std::vector<double>& cuts) {
  XMLElement& derived = input.AddChild("DerivedField");
  derived.AddAttribute(pmml::kDataType, "float");
  derived.AddAttribute(pmml::kOptype, "continuous");
  XMLElement& discretize = derived.AddChild("Discretize");
  discretize.AddAttribute("field", field);
  for (std::size_t i = 0; i <= cuts.size(); ++i) {
    const bool last = i == cuts.size();
    XMLElement& bin = discretize.AddChild("DiscretizeBin");
    bin.AddAttribute("binValue", static_cast<double>(i));
    XMLElement& interval = bin.AddChild("Interval");
    interval.AddAttribute("closure", last ? "openOpen" : "openClosed");
    if (i > 0) interval.AddAttribute("leftMargin", cuts[i - 1]);
    if (!last) interval.AddAttribute("rightMargin", cuts[i]);
  }
}

}  // namespace

std::unique_ptr<XMLElement> NBayesInput::ExportInputXML(const INBEncoder* targetEncoder) const {
  const std::string& name = fpVariable->GetVariableName();
  const INBEncoder* encoder = fpVariable->GetEncoder();
  auto input = XMLElement::Create("BayesInput");
  input->AddAttribute(pmml::kFieldName, name);
  const auto* binning = dynamic_cast<const NBBinningEncoder*>(encoder);
  if (binning != nullptr) AddBins(*input, name, FindCutpoints(*binning, *this));
  int nWithoutValue = 0;
  for (int m = 0; m < GetNCategories(); ++m) {
    if (!(GetRowTotal(m) > 0)) continue;
    XMLElement& pair = input->AddChild("PairCounts");
    // What has no value of its own, like a bin, is numbered as it is written.
    if (!MCModelFiles::AddCategory(pair, encoder, m, nWithoutValue)) ++nWithoutValue;
    XMLElement& counts = pair.AddChild(pmml::kTargetValueCounts);
    for (int k = 0; k < GetNTargetCategories(); ++k) {
      const double count = GetCount(m, k);
      if (count != 0) MCModelFiles::AddTargetCount(counts, targetEncoder, k, count);
    }
  }
  return input;
}
