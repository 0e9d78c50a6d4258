// What a part answers to a pass of the feature selection engine over its cases, or all parts do.
#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <string>

#include "host/cases/UALostWeights.h"

struct UAPartCounts {
  std::int64_t fNCases = 0;      // that were read
  std::int64_t fNDelivered = 0;  // of them went to the engine
  std::int64_t fNTest = 0;       // test cases, where there are any
  UALostWeights fLost;
  std::string fComponent;  // the component that counted, as saved state; empty where none had to

  // All but the component.
  void AddNumbers(const UAPartCounts& other);

  template <class Archive, class Self>
  static void Fields(Archive& archive, Self& self);
  int WriteObject(std::fstream& os) const;
  int ReadObject(std::fstream& is);
  void WriteObjectXML(std::ostream& os, int indent) const;
  void ReadObjectXML(std::ifstream& is);
};
