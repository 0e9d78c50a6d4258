#include <array>

#include "common/state/StateArchive.h"

BinaryStateWriter::BinaryStateWriter(std::fstream& os, const StateName& name) : fOs(os) {
  Bytes(name.fTag.data(), name.fTag.size());
}

void BinaryStateWriter::Text(const std::string& value) {
  Int(value.size());
  Bytes(value.data(), value.size());
}

void BinaryStateWriter::Gap(int bytes) {
  constexpr std::array<char, 8> kZeros{};
  Bytes(kZeros.data(), static_cast<std::size_t>(bytes));
}

void BinaryStateWriter::Bytes(const char* bytes, std::size_t n) {
  fOs.write(bytes, static_cast<std::streamsize>(n));
  fBytes += static_cast<std::int64_t>(n);
}

XMLStateWriter::XMLStateWriter(std::ostream& os, const StateName& name, int indent)
    : fOs(os), fObject(name.fElement, indent) {
  fObject.StartObj(fOs);
}

int XMLStateWriter::Finish() {
  fObject.EndObj(fOs);
  return 0;
}
