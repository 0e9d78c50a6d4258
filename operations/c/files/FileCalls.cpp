#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "host/arrow/DataFile.h"
#include "host/data/ReadingOptions.h"
#include "operations/RequestError.h"
#include "operations/c/Arguments.h"
#include "operations/c/Guard.h"
#include "operations/c/Handles.h"
#include "operations/c/TableWishes.h"

namespace PredSelectC {

namespace {

MCHost::TableStorage StorageOf(std::size_t keep) {
  if (keep == PREDSELECT_KEEP_CELLS) return MCHost::TableStorage::kMemory;
  if (keep == PREDSELECT_KEEP_ASIDE) return MCHost::TableStorage::kStreamed;
  throw Misuse("keep is neither PREDSELECT_KEEP_CELLS nor PREDSELECT_KEEP_ASIDE");
}

// "name" or "name=word".
void TakeReadingOption(const std::string& text, MCHost::ReadingOptions& reading) {
  const std::size_t equals = std::min(text.find('='), text.size());
  const std::string name = text.substr(0, equals);
  const std::string word = equals < text.size() ? text.substr(equals + 1) : "";
  const std::string wrong = MCHost::SetReadingOption(reading, name, word);
  if (!wrong.empty()) throw PredSelect::RequestError(name, wrong);
}

// Missing codes are the table's business, too.
MCHost::DataFileOptions FileOptionsOf(const predselect_file_options& given,
                                      PredSelect::TableOptions& wishes) {
  MCHost::DataFileOptions options;
  options.fReading.fMissing = wishes.fMissing;
  for (const std::string& text : TextArguments(given.reading, given.n_reading, "reading")) {
    TakeReadingOption(text, options.fReading);
  }
  wishes.fMissing = options.fReading.fMissing;
  options.fNullTokens = TextArguments(given.nulls, given.n_nulls, "nulls");
  options.fbKeepOriginal = false;
  if (!wishes.fSchema) return options;
  options.fTypes = wishes.fSchema->Types();
  const std::vector<std::string> nulls = wishes.fSchema->NullTokens();
  options.fNullTokens.insert(options.fNullTokens.end(), nulls.begin(), nulls.end());
  return options;
}

}  // namespace

}  // namespace PredSelectC

using namespace PredSelectC;

predselect_status predselect_table_open_file(predselect_session* session, const char* path,
                                             const predselect_file_options* file_options,
                                             const predselect_table_options* table_options,
                                             predselect_table** table) {
  Clear(table);
  return Guarded(session, [&] {
    predselect_table*& out = Given(table, "table");
    const predselect_table_options given = GivenOptions(table_options);
    PredSelect::TableOptions wishes = WishesOf(given);
    const MCHost::DataFileOptions options = FileOptionsOf(GivenOptions(file_options), wishes);
    const std::string file = PathArgument(path, "path");
    std::unique_ptr<MCHost::DataTable> opened =
        MCHost::OpenDataFile(file, options, StorageOf(given.keep));
    out = MakeTable(std::move(opened), TextArgument(given.name, "name", file.c_str()), wishes);
  });
}
