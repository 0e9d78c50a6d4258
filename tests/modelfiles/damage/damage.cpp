// damage TRIALS FILE...: damages the state files so often in all, and says what reading made of
// them; then the same with content that was damaged before it was sealed. Fails when a file was
// read with other numbers although its seal was broken, when what was read cannot be used, and when
// one took more than a second of processor time or the process more than 256 MB.
#include "tests/modelfiles/Damage.h"

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr double kMostSeconds = 1.0;
constexpr long kMostKilobytes = 256 * 1024;

DamageReport DamageAll(const std::vector<std::string>& files, int trials, Seal seal) {
  const std::string path = "/tmp/damaged-" + std::to_string(getpid());
  std::mt19937_64 draw(17);
  DamageReport all;
  for (std::size_t i = 0; i < files.size(); ++i) {
    const auto n = static_cast<int>(files.size());
    const int share = trials / n + (static_cast<int>(i) < trials % n ? 1 : 0);
    const DamageReport report = DamageState(files[i], path, share, seal, draw);
    if (report.fTrials != share) std::fprintf(stderr, "%s is no state\n", files[i].c_str());
    all += report;
  }
  (void)unlink(path.c_str());
  return all;
}

void Print(const char* what, const DamageReport& report) {
  std::printf(
      "%s: %d damaged, %d read with the same numbers, %d with others, %d of them unusable; "
      "at most %.3f s\n",
      what, report.fTrials, report.fSame, report.fOther, report.fUnusable, report.fMostSeconds);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const int trials = std::atoi(argv[1]);
  const std::vector<std::string> files(argv + 2, argv + argc);
  const DamageReport broken = DamageAll(files, trials, Seal::kBroken);
  Print("as they were written", broken);
  const DamageReport sealed = DamageAll(files, trials, Seal::kAnew);
  Print("sealed after the damage", sealed);
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("at most %ld MB of memory\n", usage.ru_maxrss / 1024);
  const bool isHeld = broken.fTrials == trials && broken.fOther == 0 && broken.fUnusable == 0 &&
                      sealed.fUnusable == 0 && broken.fMostSeconds < kMostSeconds &&
                      sealed.fMostSeconds < kMostSeconds && usage.ru_maxrss < kMostKilobytes;
  std::puts(isHeld ? "ok" : "FAILED");
  return isHeld ? 0 : 1;
}
