// Reference values of distributions: files made by the scripts beside them, which say where the
// values come from (20 digits).
#pragma once

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

struct Reference {
  std::string fFunction;
  double fX, fDf1, fDf2, fValue;
};

inline std::vector<Reference> ReadReferences(const std::string& name) {
  std::ifstream file(PREDSELECT_SOURCE_DIR "/tests/feature/" + name);
  std::vector<Reference> references;
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) {
    std::replace(line.begin(), line.end(), ',', ' ');
    std::istringstream fields(line);
    Reference& r = references.emplace_back();
    std::string value;
    fields >> r.fFunction >> r.fX >> r.fDf1 >> r.fDf2 >> value;
    r.fValue = std::stod(value);
  }
  return references;
}
