// A table whose cases lie in parts elsewhere: variables are known from the ranges, and passes over
// the cases are asked of whoever reaches the parts.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/data/DataTable.h"

namespace MCHost {

class PartsTable final : public DataTable {
 public:
  // `notes` on how the parts were read. REQUIRES: the whole has passes.
  explicit PartsTable(std::shared_ptr<const WholeTable> whole, std::vector<std::string> notes = {});

  // Throws HostIOError: there are no cases here.
  std::unique_ptr<ITableScan> Scan(const std::vector<int>& columns) override;
};

}  // namespace MCHost
