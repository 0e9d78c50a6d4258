#include "naivebayes/model/NBEvidence.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "naivebayes/NBAlgorithm.h"

void NBEvidence::Append(const double* probabilities, std::size_t classes,
                        std::vector<double>& evidence) {
  constexpr double kLeast = std::numeric_limits<double>::denorm_min();
  const std::size_t first = evidence.size();
  double sum = 0;
  for (std::size_t k = 0; k < classes; ++k) {
    evidence.push_back(std::log(std::max(probabilities[k], kLeast)));
    sum += evidence.back();
  }
  const double mean = sum / static_cast<double>(classes);
  for (std::size_t k = first; k < evidence.size(); ++k) evidence[k] -= mean;
}

NBEvidence::NBEvidence(const NBAlgorithm& model)
    : NBEvidence(model.GetOutput(), model.GetInputs()) {
  fpModel = &model;
  if (model.GetCalibration().GetMethod() == NBCalibration::kTemperature) {
    DivideBy(model.GetCalibration().GetTemperature());
  }
}

NBEvidence::NBEvidence(const NBayesOutput& output, const std::vector<NBayesInput>& inputs)
    : fNClasses(output.GetPriors().size()),
      fvNothing(fNClasses, 0.0),
      fvTables(inputs.size()),
      fvCodes(inputs.size()) {
  Append(output.GetPriors().data(), fNClasses, fvPriors);
  for (std::size_t j = 0; j < fvTables.size(); ++j) {
    for (int m = 0; m < inputs[j].GetNCategories(); ++m) {
      Append(inputs[j].GetFactors(m), fNClasses, fvTables[j]);
    }
  }
}

void NBEvidence::DivideBy(double temperature) {
  for (double& number : fvPriors) number /= temperature;
  for (std::vector<double>& table : fvTables) {
    for (double& number : table) number /= temperature;
  }
}

void NBEvidence::SetBlock(const MCCommon::RecordBlock& block) {
  for (std::size_t j = 0; j < fvCodes.size(); ++j) {
    fvCodes[j].resize(block.Cases());
    fpModel->EncodeInput(static_cast<int>(j), block, fvCodes[j].data());
  }
}
