#include "host/arrow/JsonSource.h"

#include <arrow/buffer.h>
#include <arrow/io/file.h>
#include <arrow/io/memory.h>

#include <utility>

#include "host/arrow/ArrowFailure.h"
#include "host/arrow/JsonRows.h"

namespace MCHost {

std::unique_ptr<IArrowSource> OpenJsonFile(const std::string& path, CellRules rules) {
  const auto open = [path] {
    return std::make_unique<JsonRows>(Value(arrow::io::ReadableFile::Open(path), path), path);
  };
  return std::make_unique<CellRowsSource>(path, open, std::move(rules));
}

std::unique_ptr<IArrowSource> OpenJsonText(const std::string& name, std::string text,
                                           CellRules rules) {
  const std::shared_ptr<arrow::Buffer> bytes = arrow::Buffer::FromString(std::move(text));
  const auto open = [name, bytes] {
    return std::make_unique<JsonRows>(std::make_shared<arrow::io::BufferReader>(bytes), name);
  };
  return std::make_unique<CellRowsSource>(name, open, std::move(rules));
}

}  // namespace MCHost
