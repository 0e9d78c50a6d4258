#include "host/data/ArrowStreamReader.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <set>
#include <utility>

#include "host/data/ReadingScope.h"
#include "host/session/HostIOError.h"
#include "host/text/Utf8.h"

namespace MCHost {

namespace {

// Releases a schema when its scope ends.
struct OwnedSchema : ArrowSchema {
  OwnedSchema() : ArrowSchema{} {}
  OwnedSchema(const OwnedSchema&) = delete;
  OwnedSchema& operator=(const OwnedSchema&) = delete;
  ~OwnedSchema() {
    if (release != nullptr) release(this);
  }
};

// Whether the children of a schema or of a batch are there.
template <class Node>
bool HasChildren(const Node& node) {
  if (node.n_children <= 0) return node.n_children == 0;
  return node.children != nullptr &&
         std::none_of(node.children, node.children + node.n_children,
                      [](const auto* child) { return child == nullptr; });
}

bool AnyNull(const ArrowArray& array) {
  const bool isMarked = array.n_buffers >= 1 && array.buffers != nullptr;
  if (array.null_count == 0 || !isMarked || array.buffers[0] == nullptr) return false;
  const auto* valid = static_cast<const std::uint8_t*>(array.buffers[0]);
  for (std::int64_t i = array.offset; i < array.offset + array.length; ++i) {
    if ((valid[i >> 3] >> (i & 7) & 1) == 0) return true;
  }
  return false;
}

}  // namespace

ArrowStreamReader::ArrowStreamReader(ArrowArrayStream* stream, std::string source)
    : fStream(*stream), fSource(std::move(source)) {
  stream->release = nullptr;
  if (fStream.release == nullptr) throw HostIOError(fSource, "", "the data stream is closed");
  try {
    ReadSchema();
  } catch (...) {
    fStream.release(&fStream);
    throw;
  }
}

ArrowStreamReader::~ArrowStreamReader() {
  ReleaseBatch();
  fStream.release(&fStream);
}

void ArrowStreamReader::ReadSchema() {
  if (fStream.get_schema == nullptr || fStream.get_next == nullptr) {
    throw HostIOError(fSource, "", "the data stream lacks a function");
  }
  OwnedSchema schema;
  if (const int code = fStream.get_schema(&fStream, &schema); code != 0) Fail(code);
  if (schema.format == nullptr || std::strcmp(schema.format, "+s") != 0 || !HasChildren(schema)) {
    throw HostIOError(fSource, "", "the data stream is not a table of columns");
  }
  std::set<std::string> names;
  for (std::int64_t i = 0; i < schema.n_children; ++i) {
    fColumns.emplace_back(*schema.children[i], fSource);
    const std::string& name = fColumns.back().Name();
    const std::string place = "column " + std::to_string(i + 1);
    if (name.empty()) throw HostIOError(fSource, place, "the column has no name");
    if (!IsUtf8(name) || !IsUtf8(fColumns.back().Label())) {
      throw HostIOError(fSource, place, "the column's name or label is not valid UTF-8");
    }
    if (!names.insert(name).second) {
      throw HostIOError(fSource, place, "a column named \"" + name + "\" is there already");
    }
  }
  ReadingScope::ReportColumns({names.begin(), names.end()});
}

bool ArrowStreamReader::NextBatch() {
  do {
    ReleaseBatch();
    if (const int code = fStream.get_next(&fStream, &fBatch); code != 0) Fail(code);
    if (fBatch.release == nullptr) return false;
  } while (fBatch.length == 0);
  AttachBatch();
  ReadingScope::Report(fBatch.length * ColumnCount());
  return true;
}

void ArrowStreamReader::AttachBatch() {
  const bool isPlaced = fBatch.length >= 0 && fBatch.offset >= 0 &&
                        fBatch.offset <= std::numeric_limits<std::int64_t>::max() - fBatch.length;
  if (!isPlaced || fBatch.n_children != ColumnCount() || !HasChildren(fBatch)) {
    throw HostIOError(fSource, "", "a batch of the data does not match its columns");
  }
  if (AnyNull(fBatch)) throw HostIOError(fSource, "", "a batch of the data holds a null row");
  for (int i = 0; i < ColumnCount(); ++i) {
    Column(i).Attach(*fBatch.children[i], fBatch.offset, fBatch.length);
  }
}

void ArrowStreamReader::ReleaseBatch() {
  if (fBatch.release != nullptr) fBatch.release(&fBatch);
  fBatch = {};
}

void ArrowStreamReader::Fail(int code) {
  const char* text = fStream.get_last_error != nullptr ? fStream.get_last_error(&fStream) : nullptr;
  throw HostIOError(fSource, "", text != nullptr && *text != '\0' ? text : std::strerror(code));
}

}  // namespace MCHost
