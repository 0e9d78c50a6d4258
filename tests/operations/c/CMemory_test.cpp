// Memory that runs out at any place of a call: a status, and the next call works.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <new>
#include <utility>

#include "tests/operations/c/CHost.h"

namespace {

thread_local long gAllocationsLeft = -1;  // before they fail; negative: none does
thread_local bool gbRefused = false;      // one has failed

}  // namespace

// Out of line: GCC doubts pairs of malloc and delete that it has pulled apart by inlining.
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (gAllocationsLeft == 0) {
    gbRefused = true;
    throw std::bad_alloc();
  }
  if (gAllocationsLeft > 0) --gAllocationsLeft;
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace {

using MCTest::CHost;
using MCTest::Held;

// Makes the call with room for 0, 1, 2, ... allocations, in growing steps, until none is refused.
// Where one was, the call must say `shortage`, or do without (0).
void Starve(const std::function<int()>& call, int shortage) {
  gbRefused = true;
  for (long room = 0; gbRefused; room += 1 + room / 40) {
    gbRefused = false;
    gAllocationsLeft = room;
    const int status = call();
    gAllocationsLeft = -1;
    ASSERT_TRUE(status == 0 || (status == shortage && gbRefused))
        << status << " with room for " << room;
  }
}

// Without charts: the library that writes JSON ends the process when it has no memory to give
// memory back.
constexpr char kCommands[] =
    "SELECTPRED species BY island WITH body_mass_g.\n"
    "NAIVEBAYES species BY island WITH body_mass_g /SAVE PREDVAL.";

TEST(CMemory, MayRunOutAnywhereInACall) {
  CHost host;
  const auto start = MCTest::Penguins;
  ArrowArrayStream stream{};
  Held<predselect_table> table;
  const auto open = [&] {
    const long room = std::exchange(gAllocationsLeft, -1);
    stream = start();
    gAllocationsLeft = room;
    return predselect_table_open(host.fSession, &stream, nullptr, &table);
  };
  Starve(open, PREDSELECT_NO_MEMORY);
  EXPECT_EQ(stream.release, nullptr);
  Starve([&] { return predselect_run(host.fSession, table, kCommands, nullptr, &host.fResult); },
         PREDSELECT_NO_MEMORY);
  Starve([&] { return predselect_describe(host.fSession, table, &host.fResult); },
         PREDSELECT_NO_MEMORY);
  Starve([&] { return predselect_result_table(host.fSession, host.fResult, 0, &stream); },
         PREDSELECT_NO_MEMORY);

  ArrowSchema schema{};
  Starve([&] { return stream.get_schema(&stream, &schema); }, ENOMEM);
  schema.release(&schema);
  ArrowArray batch{};
  EXPECT_EQ(stream.get_next(&stream, &batch), 0);
  batch.release(&batch);
  stream.release(&stream);
}

}  // namespace
