#include "host/arrow/JsonSource.h"

#include <arrow/io/interfaces.h>

#include <utility>

#include "host/arrow/JsonRows.h"

namespace MCHost {

std::unique_ptr<IArrowSource> OpenJsonSource(const TextBytes& bytes, CellRules rules) {
  const auto open = [bytes] { return std::make_unique<JsonRows>(bytes.Open(), bytes.Name()); };
  return std::make_unique<CellRowsSource>(bytes.Name(), open, std::move(rules));
}

}  // namespace MCHost
