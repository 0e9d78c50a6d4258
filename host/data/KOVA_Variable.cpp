#include "host/data/KOVA_Variable.h"

std::string KOVA_Format::ToString() const {
  if (fType == kString) return "A" + std::to_string(fWidth);
  return "F" + std::to_string(fWidth) + "." + std::to_string(fDecimals);
}

KOVA_Variable::KOVA_Variable(std::string name, int type)
    : fName(std::move(name)), fType(type), fAlignment(type == 0 ? kRight : kLeft) {
  if (type != 0) fFormat = {KOVA_Format::kString, type, 0};
  fWriteFormat = fFormat;
}
