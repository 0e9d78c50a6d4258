#include "host/data/ArrowStreamWriter.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <exception>
#include <new>

#include "host/data/ArrowCDataInterface.h"

namespace MCHost {

namespace {

void AppendCount(std::string& bytes, std::size_t count) {
  const auto value = static_cast<std::int32_t>(count);
  char raw[sizeof(value)];
  std::memcpy(raw, &value, sizeof(value));
  bytes.append(raw, sizeof(raw));
}

// A count and that many pairs, each text with its length before it. Empty for no pairs.
std::string MetadataBytes(const ArrowMetadata& pairs) {
  std::string bytes;
  if (pairs.empty()) return bytes;
  AppendCount(bytes, pairs.size());
  for (const auto& [key, text] : pairs) {
    AppendCount(bytes, key.size());
    bytes += key;
    AppendCount(bytes, text.size());
    bytes += text;
  }
  return bytes;
}

// One node of a schema and, for the top one, its columns, which may have been moved out.
struct ExportedSchema {
  ExportedSchema(std::string name, const ArrowMetadata& metadata, std::size_t nColumns)
      : fName(std::move(name)), fMetadata(MetadataBytes(metadata)), fColumns(nColumns) {
    for (ArrowSchema& column : fColumns) fPointers.push_back(&column);
  }
  ExportedSchema(const ExportedSchema&) = delete;
  ExportedSchema& operator=(const ExportedSchema&) = delete;
  ~ExportedSchema() {
    for (ArrowSchema& column : fColumns) {
      if (column.release != nullptr) column.release(&column);
    }
  }

  std::string fName;
  std::string fMetadata;
  std::vector<ArrowSchema> fColumns;
  std::vector<ArrowSchema*> fPointers;
};

void ReleaseSchema(ArrowSchema* schema) {
  delete static_cast<ExportedSchema*>(schema->private_data);
  schema->release = nullptr;
}

void HandOver(std::unique_ptr<ExportedSchema> owner, const char* format, ArrowSchema* schema) {
  *schema = {};
  schema->format = format;
  schema->name = owner->fName.c_str();
  schema->metadata = owner->fMetadata.empty() ? nullptr : owner->fMetadata.data();
  schema->flags = owner->fColumns.empty() ? ARROW_FLAG_NULLABLE : 0;
  schema->n_children = static_cast<std::int64_t>(owner->fColumns.size());
  schema->children = owner->fPointers.data();
  schema->release = ReleaseSchema;
  schema->private_data = owner.release();
}

void ExportSchema(const IArrowBatches& batches, ArrowSchema* schema) {
  const std::vector<ArrowField>& fields = batches.Fields();
  auto owner = std::make_unique<ExportedSchema>("", batches.Metadata(), fields.size());
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const ArrowField& field = fields[i];
    HandOver(std::make_unique<ExportedSchema>(field.fName, field.fMetadata, 0),
             field.fbNumeric ? "g" : "u", &owner->fColumns[i]);
  }
  HandOver(std::move(owner), "+s", schema);
}

// What a stream owns. The last failure is kept as it was thrown: reporting one allocates nothing.
struct OutgoingStream {
  std::unique_ptr<IArrowBatches> fpBatches;
  std::exception_ptr fpError;
};

OutgoingStream& Owner(ArrowArrayStream* stream) {
  return *static_cast<OutgoingStream*>(stream->private_data);
}

// Runs one operation of a stream; the return value is an errno code, as the interface wants it.
template <class Operation>
int Guarded(ArrowArrayStream* stream, Operation operation) noexcept {
  OutgoingStream& owner = Owner(stream);
  owner.fpError = nullptr;
  try {
    operation(*owner.fpBatches);
    return 0;
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  } catch (...) {
    owner.fpError = std::current_exception();
    return EIO;
  }
}

int GetSchema(ArrowArrayStream* stream, ArrowSchema* schema) {
  return Guarded(stream, [&](IArrowBatches& batches) { ExportSchema(batches, schema); });
}

int GetNext(ArrowArrayStream* stream, ArrowArray* array) {
  return Guarded(stream, [&](IArrowBatches& batches) {
    *array = {};
    std::vector<ArrowCells> columns;
    for (const ArrowField& field : batches.Fields()) columns.emplace_back(field.fbNumeric);
    const std::size_t nRecords = batches.Next(columns);
    if (nRecords > 0) ExportBatch(std::move(columns), nRecords, array);
  });
}

const char* GetLastError(ArrowArrayStream* stream) {
  const std::exception_ptr& error = Owner(stream).fpError;
  if (error == nullptr) return nullptr;
  try {
    std::rethrow_exception(error);
  } catch (const std::exception& failure) {
    return failure.what();
  } catch (...) {
    return nullptr;
  }
}

void ReleaseStream(ArrowArrayStream* stream) {
  delete &Owner(stream);
  stream->release = nullptr;
}

}  // namespace

void WriteArrowStream(std::unique_ptr<IArrowBatches> batches, ArrowArrayStream* stream) {
  auto owner = std::make_unique<OutgoingStream>();
  owner->fpBatches = std::move(batches);
  *stream = {GetSchema, GetNext, GetLastError, ReleaseStream, owner.release()};
}

}  // namespace MCHost
