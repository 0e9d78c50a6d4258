// The cells of a chunk of one column in memory, in the form that takes the least of it.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "host/data/CellForm.h"

namespace MCHost {

template <class T>
class PackedCells {
 public:
  PackedCells(std::vector<T>&& cells, T missing)
      : fMissing(missing), fForm(CellForm::Of(cells.data(), cells.size(), missing)) {
    if (fForm.IsPlain()) {
      cells.shrink_to_fit();
      fPlain = std::move(cells);
    } else {
      fPacked.resize(cells.size() * fForm.CellBytes());
      fForm.Pack(cells.data(), cells.size(), missing, fPacked.data());
    }
  }

  // What they take, with this object.
  std::size_t Bytes() const {
    return sizeof *this + fPlain.capacity() * sizeof(T) + fPacked.capacity();
  }

  // n cells from one of them on, where they lie or in the buffer, which has room for them.
  const T* Read(std::size_t first, std::size_t n, T* buffer) const {
    if (fForm.IsPlain()) return fPlain.data() + first;
    fForm.Unpack(fPacked.data() + first * fForm.CellBytes(), n, fMissing, buffer);
    return buffer;
  }

 private:
  T fMissing;
  CellForm fForm;
  std::vector<T> fPlain;
  std::vector<char> fPacked;
};

}  // namespace MCHost
