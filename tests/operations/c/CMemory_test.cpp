// Memory that runs out at any place of a call: a status, and the next call works.
#include <gtest/gtest.h>

#include <cerrno>
#include <functional>

#include "tests/Starve.h"
#include "tests/operations/c/CHost.h"

namespace {

using MCTest::CHost;
using MCTest::Held;

// Where memory was refused, the call must say `shortage`, or do without (0).
void Starve(const std::function<int()>& call, int shortage) {
  int status = 0;
  MCTest::Starve(
      MCTest::Places::kSome, [&] { status = call(); },
      [&](bool refused) { ASSERT_TRUE(status == 0 || (status == shortage && refused)) << status; });
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
  predselect_table_options options{};
  options.struct_size = sizeof(options);
  const auto open = [&] {
    {
      const MCTest::Plenty plenty;
      stream = start();
    }
    return predselect_table_open(host.fSession, &stream, &options, &table);
  };
  for (const size_t keep :
       {PREDSELECT_KEEP_ASIDE, PREDSELECT_KEEP_BATCHES, PREDSELECT_KEEP_CELLS}) {
    options.keep = keep;
    Starve(open, PREDSELECT_NO_MEMORY);
    EXPECT_EQ(stream.release, nullptr);
  }
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
