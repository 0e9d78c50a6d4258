// Weighted running mean and sum of squared deviations, updated case by case from the deviation from
// the mean so far (D. H. D. West, Updating mean and variance estimates: an improved method,
// Communications of the ACM 22 (1979), 532-535); and the same of two parts from those of each
// (T. F. Chan, G. H. Golub, R. J. LeVeque, Updating formulae and a pairwise algorithm for computing
// sample variances, Stanford University STAN-CS-79-773 (1979)).
#pragma once

// One step of the mean: W is the valid weight before the case, w > 0 the weight of the case.
inline double FSMeanStep(double x, double mean, double W, double w) {
  return w / (W + w) * (x - mean);
}

// (W + w) / w. Dividing by 1 changes nothing, and most weights are 1.
inline double FSTotalPerWeight(double W, double w) { return w == 1.0 ? W + w : (W + w) / w; }

// What the step d adds to the squared deviations: W w (x - old mean)^2 / (W + w). With the steps of
// two variables, what it adds to their cross deviations.
inline double FSDeviationStep(double dx, double dy, double W, double w) {
  return FSTotalPerWeight(W, w) * dx * W * dy;
}

// Divides squared deviations by weight - 1; `otherwise` where the weight is not above 1.
inline double FSVariance(double squaredDeviations, double weight, double otherwise) {
  return weight - 1.0 > 0.0 ? squaredDeviations / (weight - 1.0) : otherwise;
}

// The mean of two parts whose weights are V and W.
inline double FSMeanOfParts(double v, double V, double w, double W) {
  return V > 0.0 ? v + (w - v) * (W / (V + W)) : w;
}

// What the distances dx, dy between the means of two parts add to their cross deviations.
inline double FSDeviationOfParts(double dx, double dy, double V, double W) {
  return V > 0.0 && W > 0.0 ? dx * dy * (V * (W / (V + W))) : 0.0;
}
