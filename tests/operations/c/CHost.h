// What the tests of the C interface share: handles that close themselves, the example data as a
// stream, and streams read back.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "host/arrow/DataFile.h"
#include "host/data/ArrowCDataInterface.h"
#include "host/data/MemoryTable.h"
#include "host/data/TableBatches.h"
#include "operations/c/predselect.h"

namespace MCTest {

inline const std::string kPenguins = PREDSELECT_SOURCE_DIR "/data/penguins.csv";
inline const std::string kSchema = PREDSELECT_SOURCE_DIR "/data/penguins.schema.json";

struct Closer {
  void operator()(predselect_session* session) const { predselect_session_close(session); }
  void operator()(predselect_table* table) const { predselect_table_close(table); }
  void operator()(predselect_state* state) const { predselect_state_close(state); }
  void operator()(predselect_result* result) const { predselect_result_close(result); }
};

// A handle to fill (`&out`) and to use; closed with its scope.
template <class Handle>
class Held {
 public:
  Held() = default;
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  ~Held() { Close(); }
  void Close() { Closer()(std::exchange(fpHandle, nullptr)); }
  Handle** operator&() {
    Close();
    return &fpHandle;
  }
  operator Handle*() const { return fpHandle; }

 private:
  Handle* fpHandle = nullptr;
};

// The columns of a table, all of them unless said otherwise.
inline ArrowArrayStream StreamOf(std::shared_ptr<MCHost::ITable> table,
                                 std::vector<int> columns = {}) {
  if (columns.empty()) {
    columns.resize(static_cast<std::size_t>(table->ColumnCount()));
    std::iota(columns.begin(), columns.end(), 0);
  }
  ArrowArrayStream stream{};
  MCHost::WriteArrowStream(std::make_unique<MCHost::TableBatches>(std::move(table), columns),
                           &stream);
  return stream;
}

inline ArrowArrayStream Penguins() {
  return StreamOf(MCHost::OpenDataFile(kPenguins, {}, MCHost::TableStorage::kMemory));
}

// A session with a table of the penguins.
class CHost {
 public:
  explicit CHost(predselect_table_options options = {sizeof(options), nullptr, nullptr, nullptr,
                                                     nullptr, 0, 0, nullptr, 0, nullptr, 0}) {
    EXPECT_EQ(predselect_session_open(&fSession), PREDSELECT_OK);
    ArrowArrayStream stream = Penguins();
    EXPECT_EQ(predselect_table_open(fSession, &stream, &options, &fTable), PREDSELECT_OK)
        << Error();
  }

  predselect_status Run(const std::string& commands, const std::string& statePath = "",
                        size_t memory = 0) {
    const predselect_run_options options{
        sizeof(options), statePath.empty() ? nullptr : statePath.c_str(), nullptr, memory, 0, 0};
    return predselect_run(fSession, fTable, commands.c_str(), &options, &fResult);
  }

  std::string Error() const { return predselect_session_error(fSession); }

  std::string Json() {
    const char* json = nullptr;
    EXPECT_EQ(predselect_result_json(fSession, fResult, &json), PREDSELECT_OK) << Error();
    return json != nullptr ? json : "";
  }

  Held<predselect_session> fSession;
  Held<predselect_table> fTable;
  Held<predselect_result> fResult;
};

}  // namespace MCTest
