#include "host/data/ArrowCells.h"

#include <limits>
#include <memory>
#include <utility>

#include "common/MissingValue.h"
#include "host/data/ArrowCDataInterface.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

template <class Owner>
void Release(ArrowArray* array) {
  delete static_cast<Owner*>(array->private_data);
  array->release = nullptr;
}

template <class Owner>
void HandOver(std::unique_ptr<Owner> owner, ArrowArray* array) {
  array->release = Release<Owner>;
  array->private_data = owner.release();
}

// The columns of a batch. A receiver may have moved some of them out, which marks them released.
struct ExportedBatch {
  explicit ExportedBatch(std::size_t nColumns) : fColumns(nColumns) {
    for (ArrowArray& column : fColumns) fPointers.push_back(&column);
  }
  ExportedBatch(const ExportedBatch&) = delete;
  ExportedBatch& operator=(const ExportedBatch&) = delete;
  ~ExportedBatch() {
    for (ArrowArray& column : fColumns) {
      if (column.release != nullptr) column.release(&column);
    }
  }

  std::vector<ArrowArray> fColumns;
  std::vector<ArrowArray*> fPointers;
  const void* fBuffers[1] = {nullptr};  // no record is null
};

}  // namespace

// Cells that have left, and the buffers they are seen through.
struct ArrowCells::Exported {
  explicit Exported(ArrowCells&& cells) : fCells(std::move(cells)) {
    const bool numeric = fCells.fbNumeric;
    fBuffers[0] = fCells.fNMissing > 0 ? fCells.fValid.data() : nullptr;
    fBuffers[1] = numeric ? static_cast<const void*>(fCells.fNumbers.data())
                          : static_cast<const void*>(fCells.fOffsets.data());
    fBuffers[2] = numeric ? nullptr : fCells.fTexts.data();
  }

  ArrowCells fCells;
  const void* fBuffers[3];
};

void ArrowCells::AddNumbers(const double* values, std::size_t n) {
  fNumbers.insert(fNumbers.end(), values, values + n);
  for (std::size_t i = 0; i < n; ++i) AddValidity(!MCMV::IsMissing(values[i]));
}

void ArrowCells::AddText(std::string_view text) {
  constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
  if (text.size() > kMost - fTexts.size()) {
    throw HostIOError("data", "", "a batch of one column would hold more than 2 GB of text");
  }
  fTexts += text;
  fOffsets.push_back(static_cast<std::int32_t>(fTexts.size()));
  AddValidity(true);
}

void ArrowCells::AddMissing() {
  if (fbNumeric) {
    fNumbers.push_back(0.0);
  } else {
    fOffsets.push_back(fOffsets.back());
  }
  AddValidity(false);
}

void ArrowCells::AddValidity(bool valid) {
  if (fNCells % 8 == 0) fValid.push_back(0);
  if (valid) fValid.back() = static_cast<std::uint8_t>(fValid.back() | 1u << fNCells % 8);
  fNMissing += valid ? 0 : 1;
  ++fNCells;
}

void ArrowCells::Export(ArrowArray* array) {
  auto owner = std::make_unique<Exported>(std::exchange(*this, ArrowCells(fbNumeric)));
  *array = {};
  array->length = static_cast<std::int64_t>(owner->fCells.fNCells);
  array->null_count = static_cast<std::int64_t>(owner->fCells.fNMissing);
  array->n_buffers = fbNumeric ? 2 : 3;
  array->buffers = owner->fBuffers;
  HandOver(std::move(owner), array);
}

void ExportBatch(std::vector<ArrowCells> columns, std::size_t nRecords, ArrowArray* array) {
  auto owner = std::make_unique<ExportedBatch>(columns.size());
  for (std::size_t i = 0; i < columns.size(); ++i) columns[i].Export(&owner->fColumns[i]);
  *array = {};
  array->length = static_cast<std::int64_t>(nRecords);
  array->n_buffers = 1;
  array->buffers = owner->fBuffers;
  array->n_children = static_cast<std::int64_t>(columns.size());
  array->children = owner->fPointers.data();
  HandOver(std::move(owner), array);
}

}  // namespace MCHost
