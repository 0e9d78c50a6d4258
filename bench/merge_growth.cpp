// How long the pieces of very many parts take to merge, in a tree of 64 at a time, and how much
// memory: by the number of parts, for ranges and for a model's counts of 30 columns. Each piece is
// bytes, as it travels, and is made when its turn comes, so that what is held is what a driver
// would hold.

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "common/parts/TableRanges.h"
#include "common/state/StateBytes.h"
#include "naivebayes/parts/NBPartCounts.h"

namespace {

constexpr int kFan = 64;
constexpr int kColumns = 30;
constexpr int kCategories = 20;
constexpr int kTargets = 3;

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// Half of the columns are numbers, half have categories.
TableRanges Ranges() {
  TableRanges ranges;
  for (int i = 0; i < kColumns; ++i) {
    ColumnRange& column = ranges.fColumns.emplace_back();
    column.fDictionary.fName = "column " + std::to_string(i);
    column.fDictionary.fFormats.assign(6, 0);
    column.fDictionary.fLevel = i % 2 == 0 ? 3 : 1;
    column.fDictionary.fbLevelFound = true;
    column.fNValues = 1000;
    column.fbListed = i % 2 != 0;
    if (!column.fbListed) {
      column.fValid = column.fAll = {0.5 * i, 99.5};
      continue;
    }
    column.fDictionary.fType = 12;
    for (int k = 0; k < kCategories; ++k) {
      column.fTexts.push_back("category " + std::to_string(k));
      column.fFirst.push_back(k);
    }
  }
  ranges.fParts = {{0, 1000}};
  return ranges;
}

NBPartCounts Counts() {
  NBPartCounts counts;
  counts.fNCases = counts.fNRecords = 1000;
  counts.fWeight = 1000;
  counts.fTarget.assign(kTargets, 1000.0 / kTargets);
  counts.fRecords.assign(kTargets, 333);
  counts.fCategories.assign(kColumns, kCategories);
  counts.fInputs.assign(kColumns, std::vector<double>(std::size_t{kCategories} * kTargets, 16.0));
  return counts;
}

template <class Piece>
struct Tree {
  std::function<std::string(long)> fLeaf;
  std::function<void(Piece&, const Piece&)> fAdd;
  double fSeconds = 0.0;  // without the making of leaves
  double fBytes = 0.0;    // that were merged

  std::string Merge(long first, long parts) {
    if (parts == 1) return fLeaf(first);
    long share = 1;
    while (share * kFan < parts) share *= kFan;
    Piece sum;
    for (long at = 0; at < parts; at += share) {
      const std::string bytes = Merge(first + at, std::min(share, parts - at));
      const Clock::time_point start = Clock::now();
      Piece piece;
      if (!StateBytes::To(bytes, piece)) std::abort();
      at == 0 ? void(sum = std::move(piece)) : fAdd(sum, piece);
      fSeconds += SecondsSince(start);
      fBytes += static_cast<double>(bytes.size());
    }
    const Clock::time_point start = Clock::now();
    std::string bytes = StateBytes::Of(sum);
    fSeconds += SecondsSince(start);
    return bytes;
  }
};

template <class Piece>
void Show(const char* title, const Tree<Piece>& tree) {
  std::printf("%s\n", title);
  for (const long parts : {10'000L, 100'000L, 1'000'000L}) {
    Tree<Piece> run = tree;
    const std::string merged = run.Merge(0, parts);
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf(
        "  %10ld parts  %8.2f s  %7.1f us each  %6.0f MB/s  merged %9zu bytes  peak %5ld MB\n",
        parts, run.fSeconds, run.fSeconds * 1e6 / static_cast<double>(parts),
        run.fBytes / run.fSeconds / 1e6, merged.size(), usage.ru_maxrss / 1024);
  }
}

}  // namespace

int main() {
  const TableRanges ranges = Ranges();
  const NBPartCounts counts = Counts();
  Show<NBPartCounts>("A model's counts",
                     {[bytes = StateBytes::Of(counts)](long) { return bytes; },
                      [](NBPartCounts& sum, const NBPartCounts& piece) { sum.Add(piece); }});
  Show<TableRanges>("Ranges", {[&ranges](long part) {
                                 TableRanges own = ranges;
                                 own.Renumber(part);
                                 return StateBytes::Of(own);
                               },
                               [](TableRanges& sum, const TableRanges& piece) {
                                 static_cast<void>(sum.Merge(piece));
                               }});
}
