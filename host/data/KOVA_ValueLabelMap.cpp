#include "host/data/KOVA_ValueLabelMap.h"

namespace {

template <class Map, class Key>
const std::string* Find(const Map& map, const Key& key) {
  const auto found = map.find(key);
  return found == map.end() ? nullptr : &found->second;
}

}  // namespace

const std::string* KOVA_ValueLabelMap::FindLabel(double value) const {
  return Find(fNumbers, value);
}

const std::string* KOVA_ValueLabelMap::FindLabel(const std::string& value) const {
  return Find(fStrings, value);
}
