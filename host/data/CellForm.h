// How cells side by side are stored in the least bytes that hold all of them exactly: numbers as
// integers of 1, 2 or 4 bytes above a common power of ten (so decimals of few places, too), or as
// 32-bit floats; codes as integers of 1 or 2 bytes; else as they are.
//
// What comes out has the bits that went in. Which form it is shows in nothing but memory.
#pragma once

#include <cstddef>
#include <cstdint>

namespace MCHost {

class CellForm {
 public:
  // The narrowest for n cells, doubles or 32-bit codes, some of which may be missing. REQUIRES:
  // finite numbers.
  template <class T>
  static CellForm Of(const T* cells, std::size_t n, T missing);

  std::size_t CellBytes() const { return fCellBytes; }
  bool IsPlain() const { return fKind == kPlain; }  // as they are

  // Stores n cells that are of the form, and gives them back. `stored` is placed as a T must be.
  template <class T>
  void Pack(const T* cells, std::size_t n, T missing, void* stored) const;
  template <class T>
  void Unpack(const void* stored, std::size_t n, T missing, T* cells) const;

 private:
  enum Kind : std::uint8_t { kPlain, kIntegers, kFloats };

  CellForm(Kind kind, std::size_t cellBytes, int places = 0)
      : fKind(kind),
        fCellBytes(static_cast<std::uint8_t>(cellBytes)),
        fPlaces(static_cast<std::uint8_t>(places)) {}

  template <class Work>
  void WithNarrow(Work work) const;

  Kind fKind;
  std::uint8_t fCellBytes;
  std::uint8_t fPlaces;  // decimal ones of integers
};

}  // namespace MCHost
