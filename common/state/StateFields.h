// Kinds of fields that the saved classes of every engine have, with the checks that reading makes
// of them. What only one engine has is beside its classes.
#pragma once

#include <type_traits>

#include "common/CompensatedSum.h"
#include "common/state/StateArchive.h"

// Lists of plain values.
template <class Archive, class List>
void StateDoubles(Archive& archive, List& list) {
  archive.Size(list, 8);
  for (auto& value : list) archive.Double(value);
}
template <class Archive, class List>
void StateInts(Archive& archive, List& list) {
  archive.Size(list, 4);
  for (auto& value : list) archive.Int(value);
}
template <class Archive, class List>
void StateTexts(Archive& archive, List& list) {
  archive.Size(list, 4);
  for (auto& value : list) archive.Text(value);
}

// A sum with what it has lost.
template <class Archive, class Sum>
void StateSum(Archive& archive, Sum& sum) {
  double whole = sum.Sum(), lost = sum.Lost();
  archive.AnyDouble(whole);
  archive.AnyDouble(lost);
  if constexpr (Archive::kReading) sum = Sum(whole, lost);
}

// What may be there or not (std::optional).
template <class Archive, class Optional>
void StateOptional(Archive& archive, Optional& object) {
  bool isThere = object.has_value();
  archive.Flag(isThere);
  if constexpr (Archive::kReading) {
    object.reset();
    if (isThere) object.emplace();
  }
  if (isThere) archive.Object(*object);
}

// A number from `first` to `last`, such as the code of an enumeration.
template <class Archive, class Value>
void StateRanged(Archive& archive, Value& value, int first, int last) {
  auto number = static_cast<int>(value);
  archive.Int(number);
  archive.Check(number >= first && number <= last);
  if constexpr (Archive::kReading) value = static_cast<std::remove_const_t<Value>>(number);
}

// A list of such numbers.
template <class Archive, class List>
void StateRangedInts(Archive& archive, List& list, int first, int last) {
  StateInts(archive, list);
  for (const int value : list) archive.Check(value >= first && value <= last);
}
