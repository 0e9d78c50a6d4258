#include "tests/modelfiles/ScratchFile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iostream>

ScratchFile::ScratchFile() {
  static int count = 0;
  fPath =
      testing::TempDir() + "predselect_" + std::to_string(getpid()) + '_' + std::to_string(++count);
}

ScratchFile::~ScratchFile() { std::remove(fPath.c_str()); }

void ScratchFile::Write(const std::string& content) const {
  std::ofstream(fPath, std::ios::binary | std::ios::trunc) << content;
}

std::string ScratchFile::Read() const {
  std::ostringstream content;
  content << std::ifstream(fPath, std::ios::binary).rdbuf();
  return content.str();
}

QuietErrors::QuietErrors() : fpBefore(std::cerr.rdbuf(fText.rdbuf())) {}

QuietErrors::~QuietErrors() { std::cerr.rdbuf(fpBefore); }
