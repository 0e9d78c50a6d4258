// The table of effects.
#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "backend/predselect/drivers/PRSUniFactory.h"
#include "backend/predselect/output/PRSTables.h"
#include "backend/predselect/output/SelOutput.h"
#include "backend/predselect/specifications/PRSValidSpecs.h"
#include "common/MissingValue.h"
#include "feature/FSSettings.h"
#include "feature/IFSAlgorithm.h"
#include "host/data/ProcedureDataSource.h"
#include "host/output/pivot/BpComposite.h"
#include "host/output/pivot/BpPivotTable.h"
#include "host/output/pivot/BpProcedure.h"
#include "host/output/pivot/BpString.h"
#include "host/output/pivot/BpVariable.h"

namespace {

// How each test is shown, by FSEffect::Test: its name, the column of its effect size, and what is
// said where it has no statistic although the p-value is known to be zero.
struct TestTexts {
  const char* fName;
  const char* fSize;
  const char* fNoteIfPerfect;
};

constexpr TestTexts kTests[] = {
    {nullptr, nullptr, nullptr},
    {"X²", "Bias-Corrected V", nullptr},
    {"G²", "Bias-Corrected V", nullptr},
    {"F", "Eta Squared", "No within-factor variation..."},
    {"t", "Correlation", "Pearson correlation equals one..."},
};

double Log10(double logP) { return MCMV::IsMissing(logP) ? KOVA_SystemMissing : logP / M_LN10; }

// The logarithm of a p-value of zero is -infinity, which is not missing here.
double Probability(double logP) {
  return logP == MCMV::gMissingValue ? KOVA_SystemMissing : std::exp(logP);
}

// In two groups of columns, so that each is a table that can be read alone where the page is too
// narrow for both.
class EffectsTable {
 public:
  EffectsTable(BpPivotTable& table, const std::vector<PRSEffect>& effects)
      : fTable(table), fColumns(table.ColumnDimension("Statistics")) {
    AddTestColumns();
    AddEffectColumns(effects);
    fTable.Reserve(effects.size() * fNamed.size());
  }

  void Fill(const BpCategory& row, const PRSEffect& effect) {
    FillTest(row, effect);
    FillEffect(row, effect);
  }

  void NoteOnBits(const std::string& bins) {
    At("Bits").Note(
        BpComposite("Scale variables in ^1 bins of equal width...").AddLiteral(bins).Finish());
  }

 private:
  void Add(BpGroup& group, const char* key, MCHost::OutputFormat format) {
    fNamed.emplace(key, group.AddCategory(BpString(key), format));
  }
  BpCategory& At(const char* key) { return fNamed.at(key); }

  void AddTestColumns() {
    BpGroup test = fColumns.AddGroup(BpString("Test"));
    Add(test, "Type", MCHost::OutputFormat::kText);
    Add(test, "Value", BpProcedure::GeneralStat());
    Add(test, "df", BpProcedure::Count());
    Add(test, "Log10 p", BpProcedure::Correlation());
    BpGroup adjusted = test.AddGroup(BpString("Adjusted p"));
    Add(adjusted, "Benjamini-Hochberg", BpProcedure::Significance());
    Add(adjusted, "Holm", BpProcedure::Significance());
  }

  // Of the effect sizes those that some predictor has.
  void AddEffectColumns(const std::vector<PRSEffect>& effects) {
    BpGroup group = fColumns.AddGroup(BpString("Effect"));
    for (const char* size : {"Bias-Corrected V", "Eta Squared", "Correlation"}) {
      const bool isUsed = std::any_of(effects.begin(), effects.end(), [size](const PRSEffect& e) {
        return kTests[e.fEffect.fTest].fSize == std::string_view(size);
      });
      if (!isUsed) continue;
      Add(group, size, BpProcedure::Correlation());
      if (size == std::string_view("Eta Squared")) {
        Add(group, "Omega Squared", BpProcedure::Correlation());
      }
    }
    BpGroup interval = group.AddGroup(BpString("Confidence Interval"));
    Add(interval, "Lower", BpProcedure::Correlation());
    Add(interval, "Upper", BpProcedure::Correlation());
    Add(group, "Bits", BpProcedure::Correlation());
    Add(group, "Missing", BpProcedure::Percent());
  }

  void FillTest(const BpCategory& row, const PRSEffect& shown) {
    const FSEffect& effect = shown.fEffect;
    const TestTexts& texts = kTests[effect.fTest];
    fTable.SetCell({row, At("Type")}, BpString(texts.fName));
    fTable.SetCell({row, At("Value")}, effect.fStatistic);
    if (effect.fTest == FSEffect::kF) {
      const auto count = [](double df) { return MCHost::FormatNumber(df, BpProcedure::Count()); };
      fTable.SetCell({row, At("df")},
                     PRSListCell("[%1:, ^1:]1", {count(effect.fDf1), count(effect.fDf2)}));
    } else {
      fTable.SetCell({row, At("df")}, effect.fDf1);
    }
    fTable.SetCell({row, At("Log10 p")}, Log10(effect.fLogP));
    fTable.SetCell({row, At("Benjamini-Hochberg")}, Probability(shown.fLogFalseDiscovery));
    fTable.SetCell({row, At("Holm")}, Probability(shown.fLogFamilywise));
    if (effect.fbFewExpected) {
      At("Value").CellNote({row}, BpString("Expected counts too small for chi-square..."));
    }
    if (effect.IsPerfect() && texts.fNoteIfPerfect != nullptr) {
      At("Value").CellNote({row}, BpString(texts.fNoteIfPerfect));
    }
  }

  void FillEffect(const BpCategory& row, const PRSEffect& shown) {
    const FSEffect& effect = shown.fEffect;
    fTable.SetCell({row, At(kTests[effect.fTest].fSize)}, effect.fSize);
    if (effect.fTest == FSEffect::kF) {
      fTable.SetCell({row, At("Omega Squared")}, effect.fOmegaSquared);
    }
    fTable.SetCell({row, At("Lower")}, shown.fInterval.fLow);
    fTable.SetCell({row, At("Upper")}, shown.fInterval.fHigh);
    if (MCMV::IsMissing(shown.fInterval.fLow)) {
      At("Lower").CellNote({row}, BpString("No interval of the effect size..."));
    }
    fTable.SetCell({row, At("Bits")}, effect.fInformation);
    fTable.SetCell({row, At("Missing")}, effect.fPercentMissing);
  }

  BpPivotTable& fTable;
  BpDimension fColumns;
  std::map<std::string, BpCategory> fNamed;
};

}  // namespace

void SelOutput::BpEffects() const {
  const PRSEffects& effects = fpFactory->GetEffects();
  if (effects.fShown.empty()) return;
  BpPivotTable table("Predictor Effects", "PredictorEffects");
  table.Caption(BpComposite("Exact p-values, adjusted over ^1 ranked predictors...")
                    .AddLiteral(std::to_string(effects.fNRanked))
                    .Finish());
  BpDimension rows = table.RowDimension("Predictor");
  EffectsTable shown(table, effects.fShown);
  const FSSettings& settings = *Algorithm().GetSettings();
  bool isBinned = !settings.IsCatTarget();
  for (const PRSEffect& effect : effects.fShown) {
    isBinned = isBinned || !settings.IsCatPredictor(effect.fPredictor);
    shown.Fill(rows.AddCategory(BpVariable(Predictor(effect.fPredictor))), effect);
  }
  if (isBinned) shown.NoteOnBits(std::to_string(PRSMultiCriteria().fBins));
  table.Show();
}
