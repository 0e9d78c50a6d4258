// The log-likelihoods of the subsets along an order of entry, case by case.
#pragma once

#include <vector>

#include "naivebayes/NBCancelInfo.h"
#include "naivebayes/model/NBModelView.h"
#include "naivebayes/model/NBNumerics.h"
#include "naivebayes/store/NBCodeSource.h"

namespace NBSizeTerms {

// Sums w * log(1 + odds) over the cases of the source, as it stands, for the subsets of the first
// inputs of the order, from size `first` (at least 1) up to all of them; and adds the cases'
// weights. False after a cancel or where the source failed. REQUIRES: no totals so far.
[[nodiscard]] bool Sum(const NBModelView& model, const std::vector<int>& order, int first,
                       NBCodeSource& source, NBCancelInfo& cancel, std::vector<double>& totals,
                       NBSum& weight);

}  // namespace NBSizeTerms
