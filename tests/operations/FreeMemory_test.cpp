// What is left of memory, read from trees of files as systems lay them out.
#include "operations/FreeMemory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kMega = std::uint64_t{1} << 20;
const std::string kSystem = "MemTotal: 8388608 kB\nMemFree: 1024 kB\nMemAvailable:    4194304 kB\n";

struct Layout {
  const char* fName;
  std::vector<std::pair<std::string, std::string>> fFiles;
  std::optional<std::uint64_t> fFree;
};

const std::string kMeminfo = "proc/meminfo";
const std::string kGroups = "proc/self/cgroup";
const std::string kV1 = "sys/fs/cgroup/memory/";
const std::string kV2 = "sys/fs/cgroup/";

const Layout kLayouts[] = {
    {"no system that says it", {}, std::nullopt},
    {"no groups", {{kMeminfo, kSystem}}, 4096 * kMega},
    {"version 2 without a limit",
     {{kMeminfo, kSystem},
      {kGroups, "0::/user/job\n"},
      {kV2 + "user/job/memory.max", "max\n"},
      {kV2 + "user/job/memory.current", "1048576\n"}},
     4096 * kMega},
    {"version 2, limited above the group, files counted as free",
     {{kMeminfo, kSystem},
      {kGroups, "0::/user/job\n"},
      {kV2 + "user/job/memory.max", "max\n"},
      {kV2 + "user/job/memory.current", "1048576\n"},
      {kV2 + "user/memory.max", "1073741824\n"},
      {kV2 + "user/memory.current", "536870912\n"},
      {kV2 + "user/memory.stat", "file 999999999\nactive_file 7\ninactive_file 134217728\n"}},
     (1024 - 512 + 128) * kMega},
    {"version 2, slowed down before the limit",
     {{kMeminfo, kSystem},
      {kGroups, "0::/\n"},
      {kV2 + "memory.max", "1073741824\n"},
      {kV2 + "memory.high", "536870912\n"},
      {kV2 + "memory.current", "1048576\n"}},
     511 * kMega},
    {"version 1 among other controllers, its path that of the host",
     {{kMeminfo, kSystem},
      {kGroups, "5:cpu,cpuacct:/a\n4:hugetlb,memory:/docker/0123\n1:name=systemd:/\n"},
      {kV1 + "memory.limit_in_bytes", "268435456\n"},
      {kV1 + "memory.usage_in_bytes", "67108864\n"},
      {kV1 + "memory.stat", "inactive_file 1\ntotal_inactive_file 33554432\n"}},
     (256 - 64 + 32) * kMega},
    {"version 1 without a limit, the system nearly full",
     {{kMeminfo, "MemAvailable: 2048 kB\n"},
      {kGroups, "4:memory:/\n"},
      {kV1 + "memory.limit_in_bytes", "9223372036854771712\n"},
      {kV1 + "memory.usage_in_bytes", "67108864\n"}},
     2 * kMega},
    {"more used than allowed",
     {{kMeminfo, kSystem},
      {kGroups, "0::/job\n"},
      {kV2 + "job/memory.max", "1048576\n"},
      {kV2 + "job/memory.current", "2097152\n"}},
     0},
};

TEST(FreeMemory, IsTheLeastThatTheSystemAndEveryGroupLeave) {
  const std::string root = testing::TempDir() + "memory" + std::to_string(getpid());
  for (const Layout& layout : kLayouts) {
    for (const auto& [name, text] : layout.fFiles) {
      const fs::path path = root + "/" + name;
      fs::create_directories(path.parent_path());
      std::ofstream(path) << text;
    }
    EXPECT_EQ(PredSelect::FreeMemory(root), layout.fFree) << layout.fName;
    fs::remove_all(root);
  }
}

}  // namespace
