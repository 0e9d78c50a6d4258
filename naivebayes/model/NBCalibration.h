// How a model's posteriors are turned into probabilities that hold what they say: by none, by a
// temperature, or by an isotonic curve a class. docs/calibrate.md has the formulas.
//
// A plain value, and part of the model: whoever scores with the model applies it.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

class NBCalibration {
 public:
  // Saved: do not renumber.
  enum Method { kNone = 0, kTemperature = 1, kIsotonic = 2 };

  // A posterior, and what it lacks to 1: near there this has digits that the posterior has not.
  struct Posterior {
    double fValue;
    double fRest;

    bool IsBelow(double x) const { return x > 0.5 ? fRest > 1 - x : fValue < x; }
    double Beyond(double x) const { return x > 0.5 ? (1 - x) - fRest : fValue - x; }
  };

  // A curve that never falls: straight lines between its points, and level beyond them.
  struct Curve {
    std::vector<double> fX;  // posteriors, ascending
    std::vector<double> fY;  // probabilities

    double At(const Posterior& posterior) const;
  };

  NBCalibration() = default;
  // REQUIRES: above 0.
  static NBCalibration ByTemperature(double temperature);
  // A curve a class; of two classes one, that of the second class.
  static NBCalibration ByCurves(std::vector<Curve> curves);

  Method GetMethod() const { return fMethod; }
  double GetTemperature() const { return fTemperature; }
  const std::vector<Curve>& GetCurves() const { return fCurves; }

  // Whether it can be that of a model with so many classes: numbers that are finite and in order.
  bool Fits(std::size_t classes) const;

  // The probabilities for logarithms of joint values. REQUIRES: a temperature.
  void ApplyToLogs(std::span<double> logs) const;
  // The same for posteriors: each by its curve, and the sum brought to 1 again; all the same where
  // every curve gives 0. REQUIRES: curves.
  void ApplyToPosteriors(std::span<double> posteriors) const;

  // Of the softmax of the logarithms divided by the temperature.
  static void Softmax(std::span<double> logs, double temperature);

 private:
  friend struct NBCalibrationState;

  Method fMethod = kNone;
  double fTemperature = 1;
  std::vector<Curve> fCurves;
};
