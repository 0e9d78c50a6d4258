// Hands data of the host out as an Arrow C stream, the counterpart of ArrowStreamReader: a producer
// fills batches of cells, and a stream takes the producer over.
//
// Schemas, batches and their columns own themselves: they may be moved, and released in any order,
// also after the stream. A failure of the producer becomes the stream's error.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/data/ArrowCells.h"

struct ArrowArrayStream;
struct ArrowSchema;

namespace MCHost {

// Pairs of a key and a text, in order.
using ArrowMetadata = std::vector<std::pair<std::string, std::string>>;

struct ArrowField {
  std::string fName;
  bool fbNumeric = true;  // 64-bit floating point, otherwise UTF-8
  ArrowMetadata fMetadata;
};

// What a stream gives.
class IArrowBatches {
 public:
  virtual ~IArrowBatches() = default;

  virtual const std::vector<ArrowField>& Fields() const = 0;

  // Of the whole stream.
  virtual ArrowMetadata Metadata() const { return {}; }

  // Fills `columns`, an empty one a field, with the next records; returns how many, 0 at the end.
  // Throws HostIOError.
  virtual std::size_t Next(std::vector<ArrowCells>& columns) = 0;
};

// Fills `stream`, which the caller releases. The producer is asked for one batch at a time, on the
// thread that asks the stream.
void WriteArrowStream(std::unique_ptr<IArrowBatches> batches, ArrowArrayStream* stream);

}  // namespace MCHost
