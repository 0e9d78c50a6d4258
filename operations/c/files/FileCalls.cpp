#include <memory>
#include <string>
#include <vector>

#include "host/arrow/DataFile.h"
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

MCHost::DataFileOptions FileOptionsOf(const predselect_file_options& given,
                                      const PredSelect::TableOptions& wishes) {
  MCHost::DataFileOptions options;
  options.fNullTokens = TextArguments(given.nulls, given.n_nulls, "nulls");
  options.fbKeepOriginal = false;
  if (!wishes.fSchema) return options;
  options.fTypes = wishes.fSchema->Types();
  options.fColumnNulls = wishes.fSchema->ColumnNulls();
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
    const PredSelect::TableOptions wishes = WishesOf(given);
    MCHost::DataFileOptions options = FileOptionsOf(GivenOptions(file_options), wishes);
    options.fReading = ReadingOf(given);
    const std::string file = PathArgument(path, "path");
    std::unique_ptr<MCHost::DataTable> opened =
        MCHost::OpenDataFile(file, options, StorageOf(given.keep));
    out = MakeTable(std::move(opened), TextArgument(given.name, "name", file.c_str()), wishes);
  });
}
