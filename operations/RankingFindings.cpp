// The findings of a ranking: every predictor, and what it looks like beside the target.
#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "common/MissingValue.h"
#include "feature/FSCriterion.h"
#include "feature/FSSettings.h"
#include "feature/FSWithinMemory.h"
#include "feature/IFSAlgorithm.h"
#include "feature/statistics/FSAdjust.h"
#include "feature/statistics/FSEffects.h"
#include "modelfiles/StateDictionary.h"
#include "operations/FindingsParts.h"

namespace PredSelect {

namespace {

constexpr double kConfidence = 0.95;
// A chart of more categories or classes says nothing; the others are one.
constexpr std::size_t kMostCategories = 40;
constexpr std::size_t kMostClasses = 12;

// The categories of a variable as they are shown: by value, and beyond a number of them the
// heaviest ones and all others together.
class ShownCategories {
 public:
  // Weights by code.
  ShownCategories(const StateVariable& described, const KOVA_Variable* variable,
                  const std::map<int, double>& weights, std::size_t most) {
    std::vector<std::pair<double, int>> heaviest;
    for (const auto& [code, weight] : weights) heaviest.emplace_back(-weight, code);
    std::sort(heaviest.begin(), heaviest.end());
    const std::size_t nShown = heaviest.size() > most ? most - 1 : heaviest.size();
    std::vector<int> codes;
    for (std::size_t i = 0; i < nShown; ++i) codes.push_back(heaviest[i].second);
    std::sort(codes.begin(), codes.end(), [&](int a, int b) { return IsBefore(described, a, b); });
    for (const int code : codes) {
      fPlaces[code] = fTexts.size();
      fTexts.push_back(TextOf(described, variable, code));
    }
    fNOthers = heaviest.size() - nShown;
  }

  // The last one is that of the others, where there are any.
  std::size_t Size() const { return fTexts.size() + (fNOthers > 0 ? 1 : 0); }
  std::size_t PlaceOf(int code) const {
    const auto found = fPlaces.find(code);
    return found == fPlaces.end() ? fTexts.size() : found->second;
  }
  Json Texts() const { return fTexts; }
  std::size_t NOthers() const { return fNOthers; }

 private:
  static bool IsKnown(const StateVariable& described, int code) {
    return code >= 0 && code < described.GetNCategories();
  }
  static bool IsBefore(const StateVariable& described, int a, int b) {
    const bool areKnown = IsKnown(described, a) && IsKnown(described, b);
    return areKnown ? described.IsLess(a, b) : a < b;
  }
  static std::string TextOf(const StateVariable& described, const KOVA_Variable* variable,
                            int code) {
    if (!IsKnown(described, code)) return std::to_string(code);
    const auto place = static_cast<std::size_t>(code);
    return described.fbNumeric
               ? ValueText(variable, described.fNumbers[place], described.GetCategoryText(code))
               : ValueText(variable, described.fStrings[place]);
  }

  std::vector<std::string> fTexts;
  std::map<int, std::size_t> fPlaces;
  std::size_t fNOthers = 0;
};

// Rows by columns of weights.
using Counts = std::vector<std::vector<double>>;

Counts EmptyCounts(std::size_t rows, std::size_t columns) {
  return {rows, std::vector<double>(columns, 0.0)};
}

class RankingWriter {
 public:
  RankingWriter(const PRSFindings& findings, const MCHost::ITable* table)
      : fFindings(findings),
        fComponent(*findings.fpFeature),
        fSettings(*fComponent.GetSettings()),
        fDictionary(*findings.fpDictionary),
        fTable(table),
        fClasses(fDictionary.fTarget, FindVariable(table, fDictionary.fTarget.fName),
                 ClassWeights(), kMostClasses) {
    if (findings.fpBinned == nullptr) return;
    for (const PRSBinnedProfile& binned : *findings.fpBinned) fBinned[binned.fPredictor] = &binned;
  }

  Json Write() const {
    Json json = {{"kind", "ranking"}, {"target", Target()}};
    double valid = 0.0, excluded = 0.0;
    int nValid = 0, nExcluded = 0;
    fComponent.GetNValidNExcluded(valid, excluded, nValid, nExcluded);
    json["cases"] = {{"valid", nValid},
                     {"excluded", nExcluded},
                     {"valid_weight", JsonNumber(valid)},
                     {"excluded_weight", JsonNumber(excluded)}};
    json["weight"] = fDictionary.fWeight;
    json["candidates"] = fSettings.GetNPredictors();
    json["criterion"] = FSCriterion::Of(fFindings.fRanking).fHeading;
    json["selected"] = fFindings.fNSelected;
    json["predictors"] = Predictors();
    json["excluded"] = Excluded();
    return json;
  }

 private:
  std::map<int, double> ClassWeights() const {
    std::map<int, double> weights;
    for (int i = 0; i < fComponent.GetNTargetCategories(); ++i) {
      int code = 0;
      std::pair<int, double> counts;
      if (fComponent.GetTargetCategoryInfo(i, code, counts)) weights[code] = counts.second;
    }
    return weights;
  }

  Json Target() const {
    Json target = {{"name", fDictionary.fTarget.fName},
                   {"label", fDictionary.fTarget.fLabel},
                   {"scale", !fSettings.IsCatTarget()},
                   {"categories", fClasses.Texts()},
                   {"others", fClasses.NOthers()}};
    std::vector<double> weights(fClasses.Size(), 0.0);
    for (const auto& [code, weight] : ClassWeights()) weights[fClasses.PlaceOf(code)] += weight;
    target["counts"] = weights;
    return target;
  }

  Json Variable(int predictor) const {
    const StateVariable& described = fDictionary.fPredictors[static_cast<std::size_t>(predictor)];
    return {{"name", described.fName},
            {"label", described.fLabel},
            {"scale", !fSettings.IsCatPredictor(predictor)}};
  }

  // In rank order.
  Json Predictors() const {
    Json predictors = Json::array();
    std::vector<int> ranked;
    std::vector<double> values;
    if (!fComponent.ArePredictorsRanked()) return predictors;
    FSThrowWantOfMemory(fComponent.GetTopPredictors(fFindings.fRanking, ranked, values, 0));
    std::vector<FSEffect> effects;
    std::vector<double> logP;
    for (const int predictor : ranked) {
      effects.push_back(fComponent.GetPredictorEffect(fFindings.fRanking, predictor));
      logP.push_back(effects.back().fLogP);
    }
    const std::vector<double> falseDiscovery = FSAdjust::BenjaminiHochberg(logP);
    const std::vector<double> familywise = FSAdjust::Holm(logP);
    for (std::size_t i = 0; i < ranked.size(); ++i) {
      Json json = Variable(ranked[i]);
      json["rank"] = i + 1;
      json["selected"] = static_cast<int>(i) < fFindings.fNSelected;
      AddEffect(effects[i], json);
      const auto binned = fBinned.find(ranked[i]);
      if (binned != fBinned.end()) json["bits"] = JsonNumber(binned->second->fInformation);
      json["log10_fdr"] = Log10(falseDiscovery[i]);
      json["log10_holm"] = Log10(familywise[i]);
      json["shape"] = Shape(ranked[i]);
      predictors.push_back(std::move(json));
    }
    return predictors;
  }

  // A p-value of zero is not missing: its logarithm is the text "-inf".
  static Json Log10(double logP) {
    if (std::isinf(logP)) return "-inf";
    return MCMV::IsMissing(logP) ? Json(nullptr) : Json(logP / M_LN10);
  }

  void AddEffect(const FSEffect& effect, Json& json) const {
    constexpr const char* kTests[] = {"", "X²", "G²", "F", "t"};
    constexpr const char* kSizes[] = {"", "V", "V", "η²", "r"};
    const FSInterval interval = FSEffects::IntervalOf(effect, kConfidence);
    json["test"] = kTests[effect.fTest];
    json["statistic"] = JsonNumber(effect.fStatistic);
    json["df1"] = JsonNumber(effect.fDf1);
    json["df2"] = JsonNumber(effect.fDf2);
    json["log10_p"] = Log10(effect.fLogP);
    json["effect"] = kSizes[effect.fTest];
    json["size"] = JsonNumber(effect.fSize);
    json["low"] = JsonNumber(interval.fLow);
    json["high"] = JsonNumber(interval.fHigh);
    json["bits"] = JsonNumber(effect.fInformation);
    json["missing"] = JsonNumber(effect.fPercentMissing);
    if (effect.fbFewExpected) json["few_expected"] = true;
  }

  Json Shape(int predictor) const {
    const FSProfile profile = fComponent.GetPredictorProfile(predictor);
    const auto found = fBinned.find(predictor);
    Json shape = Json::object();
    if (!profile.fPairs.empty()) shape["shares"] = Shares(predictor, profile);
    if (!profile.fGroups.empty()) {
      shape["groups"] =
          fSettings.IsCatTarget() ? GroupsByClass(profile) : GroupsByCategory(predictor, profile);
    }
    if (profile.fLine.fWeight > 0.0) shape["line"] = Line(profile.fLine);
    if (found != fBinned.end() && found->second->fBins.fNBins > 0) {
      shape["bins"] = Bins(*found->second);
    }
    return shape;
  }

  ShownCategories CategoriesOf(int predictor, const std::map<int, double>& weights) const {
    const StateVariable& described = fDictionary.fPredictors[static_cast<std::size_t>(predictor)];
    return {described, FindVariable(fTable, described.fName), weights, kMostCategories};
  }

  // Weights of categories (rows) by class of the target.
  Json Shares(int predictor, const FSProfile& profile) const {
    std::map<int, double> weights;
    for (const FSProfile::Pair& pair : profile.fPairs) weights[pair.fPredictor] += pair.fWeight;
    const ShownCategories rows = CategoriesOf(predictor, weights);
    Counts counts = EmptyCounts(rows.Size(), fClasses.Size());
    for (const FSProfile::Pair& pair : profile.fPairs) {
      counts[rows.PlaceOf(pair.fPredictor)][fClasses.PlaceOf(pair.fTarget)] += pair.fWeight;
    }
    return {{"rows", rows.Texts()}, {"others", rows.NOthers()}, {"counts", counts}};
  }

  static Json Moments(const FSProfile::Group& group) {
    return {JsonNumber(group.fWeight), JsonNumber(group.fMean), JsonNumber(group.fDeviation)};
  }

  // Weight, mean and deviation of the predictor in each class; null for a class without a case.
  Json GroupsByClass(const FSProfile& profile) const {
    Json groups = Json::array();
    for (std::size_t i = 0; i < fClasses.Size() - (fClasses.NOthers() > 0 ? 1 : 0); ++i) {
      groups.push_back(nullptr);
    }
    for (const FSProfile::Group& group : profile.fGroups) {
      const std::size_t place = fClasses.PlaceOf(group.fCategory);
      if (place < groups.size()) groups[place] = Moments(group);
    }
    return {{"of", "predictor"}, {"stats", groups}};
  }

  // Weight, mean and deviation of the target in each category.
  Json GroupsByCategory(int predictor, const FSProfile& profile) const {
    std::map<int, double> weights;
    for (const FSProfile::Group& group : profile.fGroups) weights[group.fCategory] = group.fWeight;
    const ShownCategories rows = CategoriesOf(predictor, weights);
    Json groups(rows.Texts().size(), nullptr);
    for (const FSProfile::Group& group : profile.fGroups) {
      const std::size_t place = rows.PlaceOf(group.fCategory);
      if (place < groups.size()) groups[place] = Moments(group);
    }
    return {
        {"of", "target"}, {"rows", rows.Texts()}, {"others", rows.NOthers()}, {"stats", groups}};
  }

  static Json Line(const FSProfile::Line& line) {
    return {{"weight", JsonNumber(line.fWeight)},
            {"x", {JsonNumber(line.fMeanPredictor), JsonNumber(line.fDeviationPredictor)}},
            {"y", {JsonNumber(line.fMeanTarget), JsonNumber(line.fDeviationTarget)}},
            {"r", JsonNumber(line.fCorrelation)}};
  }

  // Bins of equal width: weights by class, or weight and mean of a scale target, which is that of
  // the middles of its own bins.
  Json Bins(const PRSBinnedProfile& binned) const {
    const PRSBins& bins = binned.fBins;
    const auto nBins = static_cast<std::size_t>(bins.fNBins);
    Json json = {{"low", JsonNumber(bins.fLow)}, {"high", JsonNumber(bins.fHigh)}};
    if (fSettings.IsCatTarget()) {
      Counts counts = EmptyCounts(nBins, fClasses.Size());
      for (const FSProfile::Pair& pair : binned.fProfile.fPairs) {
        counts[BinOf(pair, nBins)][fClasses.PlaceOf(pair.fTarget)] += pair.fWeight;
      }
      json["counts"] = counts;
      return json;
    }
    const PRSBins& target = fFindings.fTargetBins;
    const double width = (target.fHigh - target.fLow) / std::max(target.fNBins, 1);
    Counts means = EmptyCounts(nBins, 2);
    for (const FSProfile::Pair& pair : binned.fProfile.fPairs) {
      std::vector<double>& mean = means[BinOf(pair, nBins)];
      mean[0] += pair.fWeight;
      mean[1] += pair.fWeight * (target.fLow + (pair.fTarget + 0.5) * width);
    }
    for (std::vector<double>& mean : means) mean[1] = mean[0] > 0.0 ? mean[1] / mean[0] : 0.0;
    json["means"] = means;
    return json;
  }

  static std::size_t BinOf(const FSProfile::Pair& pair, std::size_t nBins) {
    return std::min(static_cast<std::size_t>(std::max(pair.fPredictor, 0)), nBins - 1);
  }

  // Why, by the number of the reason, and the threshold that decided (null for none).
  Json Excluded() const {
    const double thresholds[] = {MCMV::gMissingValue,
                                 MCMV::gMissingValue,
                                 MCMV::gMissingValue,
                                 fSettings.GetMaxPctMiss(),
                                 fSettings.GetMaxPctSingle(),
                                 fSettings.GetMaxNCatAsPct(),
                                 fSettings.GetMaxPctCatWithOneCase(),
                                 fSettings.GetMinStddev(),
                                 fSettings.GetMinVariation()};
    Json excluded = Json::array();
    const std::vector<int>& indices = fComponent.GetIndicesDelPred();
    for (std::size_t i = 0; i < indices.size(); ++i) {
      const int reason = fComponent.GetReasonsDelPred()[i];
      Json json = Variable(indices[i]);
      json["reason"] = reason;
      json["threshold"] = JsonNumber(thresholds[reason]);
      excluded.push_back(std::move(json));
    }
    return excluded;
  }

  const PRSFindings& fFindings;
  const IFSAlgorithm& fComponent;
  const FSSettings& fSettings;
  const StateDictionary& fDictionary;
  const MCHost::ITable* fTable;
  ShownCategories fClasses;
  std::map<int, const PRSBinnedProfile*> fBinned;
};

}  // namespace

Json RankingFindings(const PRSFindings& findings, const MCHost::ITable* table) {
  return RankingWriter(findings, table).Write();
}

}  // namespace PredSelect
