#include "host/data/KOVA_ValueLabelMap.h"

namespace {

template <class Map>
const std::string* Find(const Map& labels, const typename Map::key_type& value) {
  const auto found = labels.find(value);
  return found == labels.end() ? nullptr : &found->second;
}

}  // namespace

const std::string* KOVA_ValueLabelMap::FindLabel(double value) const {
  return Find(fNumbers, value);
}

const std::string* KOVA_ValueLabelMap::FindLabel(const std::string& value) const {
  return Find(fStrings, value);
}
