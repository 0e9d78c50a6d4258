#include "host/data/HandedStream.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <utility>

#include "host/data/ArrowStreamReader.h"
#include "host/session/HostIOError.h"

namespace MCHost {

// The stream itself, released with the last who reads of it.
class HandedStream::Incoming {
 public:
  explicit Incoming(const ArrowArrayStream& stream) : fStream(stream) {}
  Incoming(const Incoming&) = delete;
  Incoming& operator=(const Incoming&) = delete;
  ~Incoming() { fStream.release(&fStream); }

  bool IsWhole() const { return fStream.get_schema != nullptr && fStream.get_next != nullptr; }
  // Both give the producer's code, 0 for success.
  int Schema(ArrowSchema& schema) { return fStream.get_schema(&fStream, &schema); }
  int Next(ArrowArray& batch) { return fStream.get_next(&fStream, &batch); }
  std::string Trouble(int code) {
    const char* text =
        fStream.get_last_error != nullptr ? fStream.get_last_error(&fStream) : nullptr;
    return text != nullptr && *text != '\0' ? text : std::strerror(code);
  }

 private:
  ArrowArrayStream fStream;
};

// One stream that was given out.
struct HandedStream::Outgoing {
  std::vector<SharedBatch> fBatches;     // held
  std::shared_ptr<Incoming> fpIncoming;  // passed, null where the batches are held
  SharedSchema fpSchema;
  std::optional<std::vector<int>> fColumns;
  std::size_t fNext = 0;
  std::string fTrouble;

  const std::vector<int>* Columns() const { return fColumns ? &*fColumns : nullptr; }

  // The next batch, null at the end. Gives 0 or the producer's code.
  int Next(SharedBatch& batch) {
    if (fpIncoming == nullptr) {
      if (fNext < fBatches.size()) batch = fBatches[fNext++];
      return 0;
    }
    ArrowArray incoming{};
    const int code = fpIncoming->Next(incoming);
    if (code != 0) fTrouble = fpIncoming->Trouble(code);
    if (code == 0 && incoming.release != nullptr) batch = ShareBatch(incoming);
    return code;
  }

  static Outgoing& Of(ArrowArrayStream* stream) {
    return *static_cast<Outgoing*>(stream->private_data);
  }
  static int GetSchema(ArrowArrayStream* stream, ArrowSchema* schema) noexcept try {
    GiveOut(Of(stream).fpSchema, Of(stream).Columns(), schema);
    return 0;
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
  static int GetNext(ArrowArrayStream* stream, ArrowArray* array) noexcept try {
    *array = {};
    SharedBatch batch;
    const int code = Of(stream).Next(batch);
    if (code == 0 && batch != nullptr) GiveOut(batch, Of(stream).Columns(), array);
    return code;
  } catch (const std::bad_alloc&) {
    return ENOMEM;
  }
  static const char* GetLastError(ArrowArrayStream* stream) { return Of(stream).fTrouble.c_str(); }
  static void Release(ArrowArrayStream* stream) {
    delete &Of(stream);
    stream->release = nullptr;
  }
};

HandedStream::HandedStream(ArrowArrayStream* stream, std::string name, Use use)
    : fName(std::move(name)), fUse(use) {
  if (stream->release == nullptr) throw HostIOError(fName, "", "the data stream is closed");
  fpIncoming = std::make_shared<Incoming>(*stream);
  stream->release = nullptr;
  if (!fpIncoming->IsWhole()) throw HostIOError(fName, "", "the data stream lacks a function");
  const auto check = [this](int code) {
    if (code != 0) throw HostIOError(fName, "", fpIncoming->Trouble(code));
  };
  ArrowSchema schema{};
  check(fpIncoming->Schema(schema));
  fpSchema = ShareSchema(schema);
  if (use == Use::kPassed) return;
  CheckColumns();
  fNCases = 0;
  for (;;) {
    ArrowArray batch{};
    check(fpIncoming->Next(batch));
    if (batch.release == nullptr) break;
    fBatches.push_back(ShareBatch(batch));
    const std::int64_t length = fBatches.back()->length;
    if (length < 0 || length > std::numeric_limits<std::int64_t>::max() - fNCases) {
      throw HostIOError(fName, "", "a batch of the data does not match its columns");
    }
    fNCases += length;
  }
  fpIncoming = nullptr;
}

void HandedStream::CheckColumns() {
  ArrowArrayStream stream{};
  Open(nullptr, &stream);
  (void)ArrowStreamReader(&stream, fName);
}

void HandedStream::Open(const std::vector<int>* columns, ArrowArrayStream* stream) {
  auto out = std::make_unique<Outgoing>();
  out->fBatches = fBatches;
  out->fpIncoming = fpIncoming;
  out->fpSchema = fpSchema;
  if (columns != nullptr) out->fColumns = *columns;
  *stream = {Outgoing::GetSchema, Outgoing::GetNext, Outgoing::GetLastError, Outgoing::Release,
             out.release()};
}

}  // namespace MCHost
