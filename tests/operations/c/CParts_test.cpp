// A table in parts through the C interface, as another language's engine would ship it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/host/data/TableFixtures.h"
#include "tests/operations/c/CHost.h"

namespace {

using MCHost::ReadFile;
using MCHost::ScratchFolder;
using MCTest::CHost;
using MCTest::Held;

std::string BytesOf(predselect_session* session, predselect_piece* piece) {
  predselect_bytes bytes{};
  EXPECT_EQ(predselect_piece_bytes(session, piece, &bytes), PREDSELECT_OK);
  const std::string copy(static_cast<const char*>(bytes.data), bytes.size);
  predselect_piece_close(piece);
  return copy;
}

predselect_bytes View(const std::string& bytes) { return {bytes.data(), bytes.size()}; }

// The penguins in parts of so many rows, opened anew for every pass as an engine would.
class Cluster {
 public:
  explicit Cluster(std::size_t rows) {
    EXPECT_EQ(predselect_session_open(&fSession), PREDSELECT_OK);
    std::istringstream lines(ReadFile(MCTest::kPenguins));
    std::string header, line;
    std::getline(lines, header);
    for (std::size_t i = 0; std::getline(lines, line); ++i) {
      if (i % rows == 0) fFiles.push_back(header + "\n");
      fFiles.back() += line + "\n";
    }
    fCodes.resize(fFiles.size());
    std::vector<std::string> ranges;
    for (std::size_t i = 0; i < fFiles.size(); ++i) {
      Held<predselect_table> table;
      Open(i, &table);
      predselect_piece* piece = nullptr;
      EXPECT_EQ(predselect_part_ranges(fSession, table, static_cast<int64_t>(i), &piece),
                PREDSELECT_OK);
      ranges.push_back(BytesOf(fSession, piece));
    }
    fRanges = Merge(ranges);
  }

  static int Pass(void* self, int32_t over, const void* request, size_t size,
                  predselect_piece* answer) {
    auto& cluster = *static_cast<Cluster*>(self);
    const std::string merged =
        cluster.Ask(over, std::string(static_cast<const char*>(request), size));
    return predselect_piece_set(answer, merged.data(), merged.size()) == PREDSELECT_OK ? 0 : 1;
  }

  std::string fRanges;

 private:
  void Open(std::size_t part, predselect_table** table) {
    ArrowArrayStream stream = MCTest::StreamOf(MCHost::OpenDataFile(
        fFolder.Write("part.csv", fFiles[part]), {}, MCHost::TableStorage::kMemory));
    const predselect_bytes ranges = View(fRanges);
    predselect_table_options options{};
    options.struct_size = sizeof options;
    if (!fRanges.empty()) options.ranges = &ranges;
    options.part = static_cast<int64_t>(part);
    EXPECT_EQ(predselect_table_open(fSession, &stream, &options, table), PREDSELECT_OK)
        << predselect_session_error(fSession);
  }

  std::string Ask(int32_t over, const std::string& text) {
    const predselect_bytes request = View(text);
    std::vector<std::string> answers;
    for (std::size_t i = 0; i < fFiles.size(); ++i) {
      predselect_piece* answer = nullptr;
      predselect_piece* codes = nullptr;
      if (over == PREDSELECT_OVER_CODES) {
        const predselect_bytes kept = View(fCodes[i]);
        EXPECT_EQ(predselect_codes_answer(fSession, &kept, &request, &answer), PREDSELECT_OK);
      } else {
        Held<predselect_table> table;
        Open(i, &table);
        EXPECT_EQ(predselect_part_answer(fSession, table, &request, &answer, &codes), PREDSELECT_OK)
            << predselect_session_error(fSession);
      }
      EXPECT_EQ(codes != nullptr, over == PREDSELECT_OVER_ROWS_KEEP);
      if (codes != nullptr) fCodes[i] = BytesOf(fSession, codes);
      answers.push_back(BytesOf(fSession, answer));
    }
    return Merge(answers);
  }

  std::string Merge(const std::vector<std::string>& pieces) {
    std::vector<predselect_bytes> views;
    for (const std::string& piece : pieces) views.push_back(View(piece));
    predselect_piece* merged = nullptr;
    EXPECT_EQ(predselect_pieces_merge(fSession, views.data(), views.size(), &merged), PREDSELECT_OK)
        << predselect_session_error(fSession);
    return BytesOf(fSession, merged);
  }

  ScratchFolder fFolder;
  Held<predselect_session> fSession;
  std::vector<std::string> fFiles;
  std::vector<std::string> fCodes;
};

TEST(CParts, AModelOverPartsHasTheFileOfOneOverTheTable) {
  const ScratchFolder folder;
  Cluster cluster(40);
  const predselect_bytes ranges = View(cluster.fRanges);
  CHost host;
  Held<predselect_table> parts;
  ASSERT_EQ(predselect_table_open_parts(host.fSession, &ranges, "penguins", Cluster::Pass, &cluster,
                                        &parts),
            PREDSELECT_OK)
      << host.Error();
  std::string files[2];
  for (predselect_table* table :
       {static_cast<predselect_table*>(host.fTable), static_cast<predselect_table*>(parts)}) {
    const std::string path = folder.Path(table == parts ? "parts.xml" : "whole.xml");
    predselect_model_options options{};
    options.struct_size = sizeof options;
    options.pmml_path = path.c_str();
    Held<predselect_result> result;
    ASSERT_EQ(predselect_model(host.fSession, table, "species", &options, &result), PREDSELECT_OK)
        << host.Error();
    files[table == parts ? 1 : 0] =
        std::regex_replace(ReadFile(path), std::regex("<Timestamp>[^<]*"), "");
  }
  EXPECT_EQ(files[0], files[1]);
  EXPECT_NE(files[0], "");
}

TEST(CParts, MisuseAndForeignBytesAreToldApart) {
  CHost host;
  predselect_piece* piece = nullptr;
  const predselect_bytes none{nullptr, 0};
  const std::string foreign = "a foreign piece of bytes that is long enough to be one";
  const predselect_bytes bytes = View(foreign);
  EXPECT_EQ(predselect_part_ranges(host.fSession, host.fTable, -1, &piece), PREDSELECT_MISUSE);
  EXPECT_EQ(predselect_pieces_merge(host.fSession, &none, 0, &piece), PREDSELECT_MISUSE);
  EXPECT_EQ(predselect_pieces_merge(host.fSession, &bytes, 1, &piece), PREDSELECT_BAD_REQUEST);
  EXPECT_THAT(host.Error(), testing::HasSubstr("piece 0"));
  EXPECT_EQ(predselect_part_answer(host.fSession, host.fTable, &bytes, &piece, nullptr),
            PREDSELECT_BAD_REQUEST);
  EXPECT_EQ(predselect_codes_answer(host.fSession, &bytes, &bytes, &piece), PREDSELECT_BAD_REQUEST);
  Held<predselect_table> table;
  EXPECT_EQ(predselect_table_open_parts(host.fSession, &bytes, nullptr, nullptr, nullptr, &table),
            PREDSELECT_MISUSE);
  EXPECT_EQ(
      predselect_table_open_parts(host.fSession, &bytes, nullptr, Cluster::Pass, nullptr, &table),
      PREDSELECT_BAD_REQUEST);
  EXPECT_EQ(predselect_piece_set(nullptr, "", 0), PREDSELECT_MISUSE);
  EXPECT_EQ(piece, nullptr);
  ASSERT_EQ(predselect_part_ranges(host.fSession, host.fTable, 0, &piece), PREDSELECT_OK);
  predselect_bytes ranges{};
  ASSERT_EQ(predselect_piece_bytes(host.fSession, piece, &ranges), PREDSELECT_OK);
  for (const int part : {-1, -2}) {
    predselect_table_options options{};
    options.struct_size = sizeof(options);
    options.ranges = &ranges;
    options.part = part;
    ArrowArrayStream stream = MCTest::Penguins();
    EXPECT_EQ(predselect_table_open(host.fSession, &stream, &options, &table), PREDSELECT_MISUSE);
  }
  predselect_piece_close(piece);
}

// A pass that fails ends the job, with the reason that it gave.
TEST(CParts, APassThatFailsIsTheErrorOfTheJob) {
  Cluster cluster(100);
  const predselect_bytes ranges = View(cluster.fRanges);
  CHost host;
  Held<predselect_table> parts;
  const auto fail = [](void*, int32_t, const void*, size_t, predselect_piece* answer) {
    predselect_piece_set(answer, "an executor was lost", 20);
    return 1;
  };
  ASSERT_EQ(predselect_table_open_parts(host.fSession, &ranges, nullptr, fail, nullptr, &parts),
            PREDSELECT_OK);
  EXPECT_EQ(predselect_rank(host.fSession, parts, "species", nullptr, &host.fResult),
            PREDSELECT_COMMAND_ERROR);
  EXPECT_THAT(host.Error(), testing::HasSubstr("an executor was lost"));
}

}  // namespace
