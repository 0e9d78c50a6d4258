// The bodies of NBLoops, as common/EachInstructionSet.h compiles them: plain loops without a branch
// on the data, which compilers turn into vectors. Values are made fit for an integer before they
// become one.

inline std::int32_t Encode(const double* values, std::size_t n, double end, std::int32_t* codes) {
  std::int32_t lowest = 0;
  for (std::size_t i = 0; i < n; ++i) {
    codes[i] = EncodeCategory(values[i], end);
    lowest = codes[i] < lowest ? codes[i] : lowest;
  }
  return lowest;
}

// NaN falls into the first cell before it is found to be missing.
inline void FindCells(const double* values, std::size_t n, double low, double scale, double last,
                      std::int32_t* cells) {
  for (std::size_t i = 0; i < n; ++i) {
    double place = (values[i] - low) * scale;
    place = place > 0 ? place : 0;
    place = place < last ? place : last;
    place = values[i] > MCMV::gMissingValue && values[i] <= std::numeric_limits<double>::max()
                ? place
                : last + 1;
    cells[i] = static_cast<std::int32_t>(place);
  }
}

// First the cells of a batch, which takes vectors, then the counting.
inline void Tally(const std::int32_t* codes, const std::int32_t* targets, std::size_t n,
                  int targetCategories, std::size_t tables, std::size_t cells,
                  std::uint32_t* counts) {
  constexpr std::size_t kBatch = 256;
  std::int32_t places[kBatch];
  for (std::size_t from = 0; from < n; from += kBatch) {
    const std::size_t batch = n - from < kBatch ? n - from : kBatch;
    for (std::size_t i = 0; i < batch; ++i) {
      places[i] = (codes[from + i] + 1) * targetCategories + targets[from + i];
    }
    MCCommon::CountInTurn(places, batch, tables, cells, counts);
  }
}

template <std::size_t kOthers>
inline double FindOddsOf(std::size_t n, const std::int32_t* codes, const std::int32_t* targets,
                         const double* others, std::size_t stride, const double* ratios,
                         std::size_t cells, double* odds) {
  constexpr std::int32_t kTargets = kOthers + 1;
  double largest = 0;
  for (std::size_t i = 0; i < n; i += kWide) {
    std::int32_t places[kWide];
    for (std::size_t l = 0; l < kWide; ++l) {
      places[l] = (codes[i + l] + 1) * kTargets + targets[i + l];
    }
    Part sum = Load(others + i) * Gather<Part>(ratios, places);
    for (std::size_t m = 1; m < kOthers; ++m) {
      sum += Load(others + m * stride + i) * Gather<Part>(ratios + m * cells, places);
    }
    std::memcpy(odds + i, &sum, sizeof sum);
  }
  for (std::size_t i = 0; i < n; ++i) largest = odds[i] > largest ? odds[i] : largest;
  return largest;
}

inline double FindOdds(std::size_t n, const std::int32_t* codes, const std::int32_t* targets,
                       int targetCategories, const double* others, std::size_t stride,
                       const double* ratios, std::size_t cells, double* odds) {
  switch (targetCategories) {
    case 2:
      return FindOddsOf<1>(n, codes, targets, others, stride, ratios, cells, odds);
    case 3:
      return FindOddsOf<2>(n, codes, targets, others, stride, ratios, cells, odds);
    default:
      return FindOddsOf<3>(n, codes, targets, others, stride, ratios, cells, odds);
  }
}

inline void MultiplyUp(std::size_t n, const double* odds, double* products) {
  constexpr std::size_t kPlaces = 8;
  Part parts[kPlaces / kWide];
  std::memcpy(parts, products, sizeof parts);
  for (std::size_t i = 0; i < n; i += kPlaces) {
    for (std::size_t l = 0; l < kPlaces / kWide; ++l) {
      const Part more = Load(odds + i + l * kWide);
      parts[l] += more + parts[l] * more;
    }
  }
  std::memcpy(products, parts, sizeof parts);
}

constexpr NBLoops kLoops = {Encode, FindCells, Tally, FindOdds, MultiplyUp};
