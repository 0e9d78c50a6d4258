// A file in the Arrow IPC format (Feather version 2), in its file or its stream form. The stream
// form can only be read batch by batch, so its batches must fit into memory. A file form that is
// not packed is mapped into memory.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "host/arrow/FileStamp.h"
#include "host/data/IArrowSource.h"

namespace MCHost {

class IpcSource final : public IArrowSource {
 public:
  // Reads the start and the footer of the file. Throws HostIOError.
  explicit IpcSource(std::string path);

  const std::string& Name() const override { return fName; }
  void Open(const std::vector<int>* columns, ArrowArrayStream* stream) override;
  bool HasTypes() const override { return true; }
  std::int64_t CaseCount() const override { return fNCases; }
  int ColumnsAtATime() const override { return fNColumnsAtATime; }

 private:
  std::string fName;
  FileStamp fStamp;
  bool fbStreamForm = false;
  bool fbMapped = false;  // its cells need not be read
  std::int64_t fNCases = -1;
  int fNColumnsAtATime = std::numeric_limits<int>::max();
};

}  // namespace MCHost
