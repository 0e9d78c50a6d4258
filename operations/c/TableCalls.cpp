#include <cstddef>
#include <memory>
#include <string>

#include "host/data/ArrowCDataInterface.h"
#include "host/data/HandedStream.h"
#include "host/data/MemoryTable.h"
#include "host/data/StreamedTable.h"
#include "operations/c/Arguments.h"
#include "operations/c/Guard.h"
#include "operations/c/Handles.h"
#include "operations/c/TableWishes.h"

namespace PredSelectC {

namespace {

// A stream that was taken over, released unless somebody else takes it.
class TakenStream {
 public:
  explicit TakenStream(ArrowArrayStream* stream) : fpStream(stream) {}
  TakenStream(const TakenStream&) = delete;
  TakenStream& operator=(const TakenStream&) = delete;
  ~TakenStream() {
    if (fpStream != nullptr && fpStream->release != nullptr) fpStream->release(fpStream);
  }
  ArrowArrayStream& Get() const { return Given(fpStream, "stream"); }

 private:
  ArrowArrayStream* fpStream;
};

std::shared_ptr<MCHost::DataTable> TableOf(ArrowArrayStream& stream, const std::string& name,
                                           std::size_t keep) {
  using MCHost::HandedStream;
  switch (keep) {
    case PREDSELECT_KEEP_CELLS:
      return std::make_shared<MCHost::MemoryTable>(&stream, name);
    case PREDSELECT_KEEP_BATCHES:
    case PREDSELECT_KEEP_ASIDE: {
      const auto use =
          keep == PREDSELECT_KEEP_ASIDE ? HandedStream::Use::kPassed : HandedStream::Use::kHeld;
      return std::make_shared<MCHost::StreamedTable>(
          std::make_unique<HandedStream>(&stream, name, use));
    }
    default:
      throw Misuse(
          "keep is none of PREDSELECT_KEEP_CELLS, PREDSELECT_KEEP_BATCHES, "
          "PREDSELECT_KEEP_ASIDE");
  }
}

}  // namespace

}  // namespace PredSelectC

using namespace PredSelectC;

predselect_status predselect_table_open(predselect_session* session, ArrowArrayStream* stream,
                                        const predselect_table_options* options,
                                        predselect_table** table) {
  const TakenStream taken(stream);
  Clear(table);
  return Guarded(session, [&] {
    predselect_table*& out = Given(table, "table");
    const predselect_table_options given = GivenOptions(options);
    const PredSelect::TableOptions wishes = WishesOf(given);
    const std::string name = TextArgument(given.name, "name", "data");
    out = MakeTable(TableOf(taken.Get(), name, given.keep), name, wishes);
  });
}

void predselect_table_close(predselect_table* table) { delete table; }

predselect_status predselect_table_notes(predselect_session* session, const predselect_table* table,
                                         const char** notes) {
  Clear(notes);
  return Guarded(session, [&] { Given(notes, "notes") = Given(table, "table").fNotes.c_str(); });
}
