// What the tests of tables share: files in a directory of their own, and tables as plain text.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/data/ITable.h"

namespace MCHost {

// A directory that lives as long as the object.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  std::string Path(const std::string& name) const { return (fPath / name).string(); }
  // Writes a file and gives its path.
  std::string Write(const std::string& name, const std::string& bytes) const;
  // Names of the files in it, sorted.
  std::vector<std::string> Files() const;

 private:
  std::filesystem::path fPath;
};

std::string ReadFile(const std::string& path);

// All cells of a column: numbers with 17 digits, strings as code and text ("0:red"), "." missing.
std::vector<std::string> Cells(ITable& table, int column);

// "name:type" of every column, type 0 numeric else the width.
std::vector<std::string> Dictionary(const ITable& table);

// The table's columns with their cells: what two equal tables have in common.
std::vector<std::vector<std::string>> Contents(ITable& table);

}  // namespace MCHost
