// The bodies of FSLoops, as common/EachInstructionSet.h compiles them, once for every kWide.
//
// The sums are written as vectors of kWide lanes (a vector type of GCC and Clang): of plain loops
// over eight lanes GCC keeps three sums in memory, at half the speed.

constexpr std::size_t kParts = FSLanes::kCount / kWide;

// Eight lanes.
struct Lanes {
  Part fParts[kParts];

  explicit Lanes(FSLanes& from) { std::memcpy(fParts, from.Data(), sizeof fParts); }
  void Store(FSLanes& to) const { std::memcpy(to.Data(), fParts, sizeof fParts); }
};

template <bool kOrdered>
inline Part Take(const double* from, const FSPlace* order, std::size_t k) {
  if constexpr (kOrdered) return Gather<Part>(from, order + k);
  return Load(from + k);
}

template <bool kOrdered, bool kWeighted>
inline void AddStepsOf(std::size_t n, const FSRun& run, double origin, FSStepSums& sums) {
  const double* const values = run.fpValues;
  const double* const weights = run.fpWeights;
  const FSPlace* const order = run.fpOrder;
  Lanes w(sums.fWeights), s(sums.fSums), q(sums.fSquares);
  for (std::size_t k = 0; k < n; k += FSLanes::kCount) {
    for (std::size_t l = 0; l < kParts; ++l) {
      const Part step = Take<kOrdered>(values, order, k + kWide * l) - origin;
      if constexpr (kWeighted) {
        const Part weight = Take<kOrdered>(weights, order, k + kWide * l);
        w.fParts[l] += weight;
        s.fParts[l] += weight * step;
        q.fParts[l] += weight * (step * step);
      } else {
        s.fParts[l] += step;
        q.fParts[l] += step * step;
      }
    }
  }
  if constexpr (!kWeighted) {
    for (Part& part : w.fParts) part += static_cast<double>(n / FSLanes::kCount);
  }
  w.Store(sums.fWeights), s.Store(sums.fSums), q.Store(sums.fSquares);
}

inline void AddSteps(std::size_t n, const FSRun& run, double origin, FSStepSums& sums) {
  if (run.fpOrder != nullptr) {
    if (run.fpWeights != nullptr) return AddStepsOf<true, true>(n, run, origin, sums);
    return AddStepsOf<true, false>(n, run, origin, sums);
  }
  if (run.fpWeights != nullptr) return AddStepsOf<false, true>(n, run, origin, sums);
  return AddStepsOf<false, false>(n, run, origin, sums);
}

template <bool kWeighted>
inline void AddProductsOf(std::size_t n, const double* x, double origin, const double* stepsY,
                          const double* weights, FSLanes& sums, FSLanes& squares,
                          FSLanes& products) {
  Lanes s(sums), q(squares), c(products);
  for (std::size_t k = 0; k < n; k += FSLanes::kCount) {
    for (std::size_t l = 0; l < kParts; ++l) {
      const std::size_t at = k + kWide * l;
      const Part step = Load(x + at) - origin;
      if constexpr (kWeighted) {
        const Part weight = Load(weights + at);
        s.fParts[l] += weight * step;
        q.fParts[l] += weight * (step * step);
        c.fParts[l] += weight * (step * Load(stepsY + at));
      } else {
        s.fParts[l] += step;
        q.fParts[l] += step * step;
        c.fParts[l] += step * Load(stepsY + at);
      }
    }
  }
  s.Store(sums), q.Store(squares), c.Store(products);
}

inline void AddProducts(std::size_t n, const double* x, double origin, const double* stepsY,
                        const double* weights, FSLanes& sums, FSLanes& squares, FSLanes& products) {
  if (weights != nullptr) {
    AddProductsOf<true>(n, x, origin, stepsY, weights, sums, squares, products);
  } else {
    AddProductsOf<false>(n, x, origin, stepsY, nullptr, sums, squares, products);
  }
}

inline void FindPlaces(const double* values, std::size_t n, std::uint8_t* places) {
  constexpr double kEnd = kFSSmallCategories;
  for (std::size_t i = 0; i < n; ++i) {
    const double value = values[i];
    const double place = value > -1.0 && value < kEnd ? value : kEnd;
    places[i] = static_cast<std::uint8_t>(static_cast<std::int32_t>(place));
  }
}

inline bool TakeCategories(const double* values, std::size_t n, std::int32_t* categories) {
  constexpr double kEnd = 0x1p31;
  std::int32_t others = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const double value = values[i];
    const double category = value > -1.0 && value < kEnd ? value : -1.0;
    categories[i] = static_cast<std::int32_t>(category);
    others |= categories[i];
  }
  return others >= 0;
}

// First the places of a batch, which takes vectors, then the counting.
inline void CountPairs(const double* predictor, const std::int32_t* targets, std::size_t n,
                       int rows, int shift, std::size_t tables, std::size_t cells,
                       std::uint32_t* counts) {
  constexpr std::size_t kBatch = 256;
  std::int32_t places[kBatch];
  const double end = rows;
  for (std::size_t from = 0; from < n; from += kBatch) {
    const std::size_t batch = n - from < kBatch ? n - from : kBatch;
    for (std::size_t i = 0; i < batch; ++i) {
      const double value = predictor[from + i];
      const double row = value > -1.0 && value < end ? value : end;
      places[i] = (static_cast<std::int32_t>(row) << shift) + targets[from + i];
    }
    MCCommon::CountInTurn(places, batch, tables, cells, counts);
  }
}

constexpr FSLoops kLoops = {AddSteps, AddProducts, FindPlaces, TakeCategories, CountPairs};
