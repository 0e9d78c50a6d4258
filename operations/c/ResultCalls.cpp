#include <algorithm>
#include <cstring>
#include <memory>
#include <numeric>
#include <vector>

#include "host/data/ArrowCDataInterface.h"
#include "host/data/MemoryTable.h"
#include "host/data/TableBatches.h"
#include "host/output/FlatRecords.h"
#include "host/output/render/KeptDocument.h"
#include "host/output/render/LayFlat.h"
#include "host/output/render/RenderJson.h"
#include "host/output/render/RenderText.h"
#include "host/output/render/TableRecords.h"
#include "host/output/report/RenderReport.h"
#include "operations/c/Arguments.h"
#include "operations/c/Guard.h"
#include "operations/c/Handles.h"

namespace PredSelectC {

namespace {

// The table of that number, with its run. Throws Misuse for one that is not there.
predselect_table_info InfoOf(const predselect_result& result, std::size_t index,
                             const MCHost::OutputTable** table) {
  std::size_t left = index;
  const std::vector<MCHost::OutputRun>& runs = result.fDocument.GetRuns();
  for (std::size_t run = 0; run < runs.size(); ++run) {
    const std::vector<MCHost::OutputTable>& tables = runs[run].fTables;
    if (left < tables.size()) {
      *table = &tables[left];
      return {sizeof(predselect_table_info), tables[left].fSubtype.c_str(),
              tables[left].fTitle.fKey.c_str(), runs[run].fCommand.c_str(), run};
    }
    left -= tables.size();
  }
  throw Misuse("the result has no table " + std::to_string(index));
}

template <class MakeBatches>
predselect_status GiveStream(predselect_session* session, ArrowArrayStream* stream,
                             MakeBatches makeBatches) {
  if (stream != nullptr) *stream = {};
  return Guarded(session, [&] {
    ArrowArrayStream& out = Given(stream, "stream");
    MCHost::WriteArrowStream(makeBatches(), &out);
  });
}

}  // namespace

}  // namespace PredSelectC

using namespace PredSelectC;

predselect_status predselect_result_json(predselect_session* session, predselect_result* result,
                                         const char** json) {
  Clear(json);
  return Guarded(session, [&] {
    const char*& out = Given(json, "json");
    predselect_result& asked = Given(result, "result");
    if (asked.fJson.empty()) asked.fJson = MCHost::RenderJson(asked.fDocument);
    out = asked.fJson.c_str();
  });
}

predselect_status predselect_result_text(predselect_session* session, predselect_result* result,
                                         size_t width, const char** text) {
  Clear(text);
  return Guarded(session, [&] {
    const char*& out = Given(text, "text");
    predselect_result& asked = Given(result, "result");
    MCHost::TextOptions page;
    if (width > 0) page.fWidth = width;
    asked.fPage = MCHost::RenderText(asked.fDocument, page);
    out = asked.fPage.c_str();
  });
}

predselect_status predselect_result_html(predselect_session* session, predselect_result* result,
                                         const char* heading, const char** html) {
  Clear(html);
  return Guarded(session, [&] {
    const char*& out = Given(html, "html");
    predselect_result& asked = Given(result, "result");
    const std::string about = TextArgument(heading, "heading", asked.fDocument.fDataSource.c_str());
    asked.fReport = MCHost::RenderReport(asked.fDocument, about);
    out = asked.fReport.c_str();
  });
}

predselect_status predselect_result_keep(predselect_session* session, predselect_result* result,
                                         const char** bytes, size_t* size) {
  Clear(bytes);
  return Guarded(session, [&] {
    const char*& out = Given(bytes, "bytes");
    std::size_t& length = Given(size, "size");
    predselect_result& asked = Given(result, "result");
    if (asked.fKept.empty()) asked.fKept = MCHost::KeepDocument(asked.fDocument);
    out = asked.fKept.data();
    length = asked.fKept.size();
  });
}

predselect_status predselect_result_restore(predselect_session* session, const char* bytes,
                                            size_t size, predselect_result** result) {
  Clear(result);
  return Guarded(session, [&] {
    predselect_result*& out = Given(result, "result");
    auto restored = std::make_unique<predselect_result>();
    restored->fDocument = MCHost::ReadKeptDocument({&Given(bytes, "bytes"), size});
    out = restored.release();
  });
}

predselect_status predselect_result_table_count(predselect_session* session,
                                                const predselect_result* result, size_t* count) {
  return Guarded(session, [&] {
    std::size_t& out = Given(count, "count");
    out = 0;
    for (const MCHost::OutputRun& run : Given(result, "result").fDocument.GetRuns()) {
      out += run.fTables.size();
    }
  });
}

predselect_status predselect_result_table_info(predselect_session* session,
                                               const predselect_result* result, size_t index,
                                               predselect_table_info* info) {
  return Guarded(session, [&] {
    const std::size_t room = Given(info, "info").struct_size;
    CheckStruct(info, room, room);
    const MCHost::OutputTable* table = nullptr;
    predselect_table_info known = InfoOf(Given(result, "result"), index, &table);
    known.struct_size = room;
    std::memcpy(info, &known, std::min(room, sizeof(known)));
  });
}

predselect_status predselect_result_table(predselect_session* session,
                                          const predselect_result* result, size_t index,
                                          ArrowArrayStream* stream) {
  return GiveStream(session, stream, [&] {
    const MCHost::OutputTable* table = nullptr;
    InfoOf(Given(result, "result"), index, &table);
    return std::make_unique<MCHost::FlatBatches>(MCHost::TableRecords(*table));
  });
}

predselect_status predselect_result_records(predselect_session* session,
                                            const predselect_result* result, size_t index,
                                            ArrowArrayStream* stream) {
  return GiveStream(session, stream, [&] {
    const MCHost::OutputTable* table = nullptr;
    InfoOf(Given(result, "result"), index, &table);
    return std::make_unique<MCHost::FlatBatches>(MCHost::LayFlat(*table));
  });
}

predselect_status predselect_result_new_columns(predselect_session* session,
                                                const predselect_result* result,
                                                ArrowArrayStream* stream) {
  return GiveStream(session, stream, [&] {
    const predselect_result& asked = Given(result, "result");
    if (asked.fpTable == nullptr) throw Misuse("the result is not of a table");
    std::vector<int> columns(
        static_cast<std::size_t>(asked.fNewColumnsEnd - asked.fFirstNewColumn));
    std::iota(columns.begin(), columns.end(), asked.fFirstNewColumn);
    return std::make_unique<MCHost::TableBatches>(asked.fpTable, columns);
  });
}

void predselect_result_close(predselect_result* result) { delete result; }
