#include "feature/FSCriterion.h"

#include <algorithm>

using namespace MCFSCommon;
using enum FSDirection;
using enum FSPart;

namespace {

constexpr FSOutput kPValue = {"Unadjusted Sig.", "criterionValue", FSOutput::kSignificance,
                              &FSScore::fValue, true};

constexpr FSOutput kChiSquare[] = {
    kPValue,
    {"Value", "statisticValue", FSOutput::kStatistic, &FSScore::fTie1},
    {"df", "df", FSOutput::kCount, &FSScore::fTie2}};

constexpr FSOutput kMeasure[] = {
    {"Value", "criterionValue", FSOutput::kStatistic, &FSScore::fValue}};

constexpr FSOutput kF[] = {kPValue,
                           {"Value", "statisticValue", FSOutput::kStatistic, &FSScore::fTie1, false,
                            "No within-factor variation..."},
                           {"df1", "df", FSOutput::kCount, &FSScore::fExtra1},
                           {"df2", "df2", FSOutput::kCount, &FSScore::fExtra2}};

constexpr FSOutput kT[] = {kPValue,
                           {"Value", "corrCoeff", FSOutput::kCorrelation, &FSScore::fExtra1},
                           {"t", "statisticValue", FSOutput::kStatistic, &FSScore::fExtra2, false,
                            "Pearson correlation equals one..."},
                           {"df", "df", FSOutput::kCount, &FSScore::fExtra3, true}};

constexpr unsigned kCategorical = 1U << kAllCategorical;
constexpr unsigned kContinuous = 1U << kAllContinuous;
constexpr unsigned kBothKinds = 1U << kMixed;

constexpr std::array<FSCriterion, kNCriteria> kCriteria = {{
    {.fCode = kPearson,
     .fName = "Pearson chi-square p-value",
     .fShortName = "Pearson",
     .fNameInRanking = "Pearson",
     .fHeading = "Pearson Chi-Square",
     .fFileStem = "pearson",
     .fKeyword = "PEARSONCHISQ",
     .fOptionText = "Pearson Chi Square",
     .fSetsOfCatTarget = kCategorical | kBothKinds,
     .fSetsOfContTarget = 0,
     .fbByDefault = true,
     .fOrder = {kSmallerFirst, kLargerFirst, kSmallerFirst},
     .fOutputs = kChiSquare,
     .fCatCat = {kShown, FSFormulas::Pearson},
     .fContCat = {kBeside, FSFormulas::AnovaAmongTables}},
    {.fCode = kLikelihood,
     .fName = "Likelihood ratio chi-square p-value",
     .fShortName = "Likelihood",
     .fNameInRanking = "Likelihood",
     .fHeading = "Likelihood Ratio Chi-Square",
     .fFileStem = "likelihood",
     .fKeyword = "LRCHISQ",
     .fOptionText = "Likelihood Ratio Chi Square",
     .fSetsOfCatTarget = kCategorical | kBothKinds,
     .fSetsOfContTarget = 0,
     .fbByDefault = true,
     .fOrder = {kSmallerFirst, kLargerFirst, kSmallerFirst},
     .fOutputs = kChiSquare,
     .fCatCat = {kShown, FSFormulas::LikelihoodRatio},
     .fContCat = {kBeside, FSFormulas::AnovaAmongTables}},
    {.fCode = kCramer,
     .fName = "Cramer's V",
     .fShortName = "Cramer",
     .fNameInRanking = "Cramer V",
     .fHeading = "Cramer's V",
     .fFileStem = "cramer",
     .fKeyword = "CRAMERSV",
     .fOptionText = "Predictors are sorted in descending order of Cramers's V",
     .fSetsOfCatTarget = kCategorical,
     .fSetsOfContTarget = 0,
     .fbByDefault = true,
     .fOrder = {kLargerFirst, kLargerFirst, kIgnored},
     .fOutputs = kMeasure,
     .fCatCat = {kShown, FSFormulas::Cramer}},
    {.fCode = kLambda,
     .fName = "Asymmetric lambda",
     .fShortName = "Lambda",
     .fNameInRanking = "Lambda",
     .fHeading = "Lambda",
     .fFileStem = "lambda",
     .fKeyword = "LAMBDA",
     .fOptionText = "Rank Predictors based on Lambda (asymmetric)",
     .fSetsOfCatTarget = kCategorical,
     .fSetsOfContTarget = 0,
     .fbByDefault = true,
     .fOrder = {kLargerFirst, kSmallerFirst, kIgnored},
     .fOutputs = kMeasure,
     .fCatCat = {kShown, FSFormulas::Lambda}},
    {.fCode = kFStat,
     .fName = "F-statistic p-value",
     .fShortName = "F-Statistic",
     .fNameInRanking = "F-Statistic",
     .fHeading = "F",
     .fFileStem = "f",
     .fKeyword = nullptr,
     .fOptionText = nullptr,
     .fSetsOfCatTarget = kContinuous | kBothKinds,
     .fSetsOfContTarget = kCategorical | kBothKinds,
     .fbByDefault = true,
     .fOrder = {kSmallerFirst, kLargerFirst, kLargerFirst},
     .fOutputs = kF,
     .fCatCont = {kShown, FSFormulas::Anova},
     .fContCat = {kShown, FSFormulas::Anova},
     .fContCont = {kBeside, FSFormulas::CorrelationTest}},
    {.fCode = kTStat,
     .fName = "t-statistic p-value",
     .fShortName = "t-Statistic",
     .fNameInRanking = "t-Statistic",
     .fHeading = "Pearson Correlation",
     .fFileStem = "t",
     .fKeyword = nullptr,
     .fOptionText = nullptr,
     .fSetsOfCatTarget = 0,
     .fSetsOfContTarget = kContinuous | kBothKinds,
     .fbByDefault = true,
     .fOrder = {kSmallerFirst, kLargerFirst, kLargerFirst},
     .fOutputs = kT,
     .fCatCont = {kBeside, FSFormulas::Anova},
     .fContCont = {kShown, FSFormulas::CorrelationTest}},
}};

constexpr bool AreInOrder() {
  int code = 0;
  for (const FSCriterion& row : kCriteria) {
    if (row.fCode != code++) return false;
    if (row.fOutputs.empty() || row.fOutputs.size() > FSCriterion::kMaxOutputs) return false;
  }
  return true;
}
static_assert(AreInOrder(), "each code has its row, at its place");

}  // namespace

const std::array<FSCriterion, kNCriteria>& FSCriterion::All() { return kCriteria; }

const FSCriterion& FSCriterion::Of(RankCriteria code) { return kCriteria[code]; }

const FSCriterion* FSCriterion::Find(int code) {
  return code >= 0 && code < kNCriteria ? &kCriteria[static_cast<std::size_t>(code)] : nullptr;
}

const FSCriterion* FSCriterion::FindKeyword(std::string_view word) {
  const auto at = std::find_if(kCriteria.begin(), kCriteria.end(), [word](const FSCriterion& row) {
    return row.IsChoice() && row.fKeyword == word;
  });
  return at == kCriteria.end() ? nullptr : &*at;
}

bool FSCriterion::Suits(bool catTarget, PredictorSetType set) const {
  const unsigned sets = catTarget ? fSetsOfCatTarget : fSetsOfContTarget;
  return set == kNoPredictors ? sets != 0 : (sets >> set & 1U) != 0;
}

bool FSCriterion::IsDefault(bool catTarget, PredictorSetType set) const {
  return fbByDefault && set != kNoPredictors && Suits(catTarget, set);
}

FSPart FSCriterion::PartOf(bool catPredictor, bool catTarget) const {
  if (catPredictor) return catTarget ? fCatCat.fPart : fCatCont.fPart;
  return catTarget ? fContCat.fPart : fContCont.fPart;
}

bool FSCriterion::GetOutputs(const FSScore& score, double& value, double& out2, double& out3,
                             double& out4) const {
  value = out2 = out3 = out4 = MCMV::gMissingValue;
  if (score.fPart != kShown) return false;
  double* const shown[] = {&value, &out2, &out3, &out4};
  for (std::size_t i = 0; i < fOutputs.size(); ++i) *shown[i] = score.*fOutputs[i].fpSource;
  return true;
}
