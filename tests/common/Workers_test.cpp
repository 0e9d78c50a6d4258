#include "common/Workers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <new>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using MCCommon::Workers;

class WorkersOf : public testing::TestWithParam<int> {
 protected:
  Workers fWorkers{GetParam()};
};

// Long enough for the other threads to join in.
void Linger() { std::this_thread::sleep_for(std::chrono::microseconds(200)); }

TEST_P(WorkersOf, TakeEachIndexOnceWithANumberOfTheirOwn) {
  for (const std::size_t n : {0, 1, 2, 3, 7, 100, 5000}) {
    for (int round = 0; round < 30; ++round) {
      std::vector<int> taken(n, 0);
      std::vector<std::size_t> sums(fWorkers.Count(), 0);
      fWorkers.ForEach(n, [&](std::size_t i, std::size_t worker) {
        ++taken[i];
        sums.at(worker) += i + 1;
      });
      std::size_t sum = 0;
      for (const std::size_t part : sums) sum += part;
      EXPECT_EQ(taken, std::vector<int>(n, 1));
      EXPECT_EQ(sum, n * (n + 1) / 2);
    }
  }
}

TEST_P(WorkersOf, AskOnTheCallersThreadWhetherToStop) {
  const std::thread::id caller = std::this_thread::get_id();
  std::atomic<int> begun = 0;
  int asked = 0;
  bool isElsewhere = false;
  const auto stop = [&] {
    isElsewhere = isElsewhere || std::this_thread::get_id() != caller;
    return ++asked > 3;
  };
  const auto work = [&](std::size_t, std::size_t) {
    ++begun;
    Linger();
  };
  fWorkers.ForEach(100000, work, stop);
  EXPECT_EQ(asked, 4);
  EXPECT_FALSE(isElsewhere);
  EXPECT_GE(begun, 3);
  EXPECT_LT(begun, 10000);
}

TEST_P(WorkersOf, ThrowToTheCallerWhatAnyOfThemThrew) {
  for (int round = 0; round < 20; ++round) {
    const auto starve = [&](std::size_t, std::size_t worker) {
      Linger();
      if (worker + 1 == fWorkers.Count()) throw std::bad_alloc();
    };
    EXPECT_THROW(fWorkers.ForEach(100000, starve), std::bad_alloc);
  }
  std::atomic<int> begun = 0;
  fWorkers.ForEach(50, [&](std::size_t, std::size_t) { ++begun; });
  EXPECT_EQ(begun, 50);
}

INSTANTIATE_TEST_SUITE_P(OfSeveralThreads, WorkersOf, testing::Values(0, 1, 2, 3, 7));

TEST(Workers, AreTheCallerAloneForLittleWork) {
  Workers workers(4);
  EXPECT_EQ(workers.For(Workers::kWorthwhile).Count(), 4u);
  EXPECT_EQ(workers.For(Workers::kWorthwhile - 1).Count(), 1u);
}

}  // namespace
