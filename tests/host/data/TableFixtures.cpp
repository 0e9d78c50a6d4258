#include "tests/host/data/TableFixtures.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "common/MissingValue.h"

namespace MCHost {

ScratchFolder::ScratchFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "tables.XXXXXX").string();
  fPath = mkdtemp(name.data());
}

ScratchFolder::~ScratchFolder() { std::filesystem::remove_all(fPath); }

std::string ScratchFolder::Write(const std::string& name, const std::string& bytes) const {
  std::ofstream(Path(name), std::ios::binary) << bytes;
  return Path(name);
}

std::vector<std::string> ScratchFolder::Files() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(fPath)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

namespace {

std::string Digits(double value) {
  std::ostringstream text;
  text.precision(17);
  text << value;
  return text.str();
}

}  // namespace

std::vector<std::string> Cells(ITable& table, int column) {
  std::vector<std::string> cells;
  const auto scan = table.Scan({column});
  while (const TableBatch* batch = scan->Next()) {
    EXPECT_EQ(batch->fFirstCase, static_cast<std::int64_t>(cells.size()));
    const ColumnView& view = batch->fColumns.at(0);
    for (std::size_t i = 0; i < batch->fNCases; ++i) {
      if (view.fpNumbers != nullptr) {
        const double value = view.fpNumbers[i];
        cells.push_back(value == KOVA_SystemMissing ? "." : Digits(value));
      } else {
        const std::int32_t code = view.fpCodes[i];
        cells.push_back(code < 0 ? "." : std::to_string(code) + ":" + view.fpDictionary->At(code));
      }
    }
  }
  return cells;
}

std::vector<std::string> Dictionary(const ITable& table) {
  std::vector<std::string> names;
  for (int i = 0; i < table.ColumnCount(); ++i) {
    const KOVA_Variable& variable = table.GetVariable(i);
    names.push_back(variable.GetName() + ":" + std::to_string(variable.GetType()));
  }
  return names;
}

std::vector<std::vector<std::string>> Contents(ITable& table) {
  std::vector<std::vector<std::string>> contents{Dictionary(table)};
  for (int i = 0; i < table.ColumnCount(); ++i) contents.push_back(Cells(table, i));
  return contents;
}

}  // namespace MCHost
