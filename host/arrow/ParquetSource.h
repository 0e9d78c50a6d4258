// A Parquet file, read row group by row group.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "host/arrow/FileStamp.h"
#include "host/data/IArrowSource.h"

namespace parquet::arrow {
class FileReader;
}

namespace MCHost {

class ParquetSource final : public IArrowSource {
 public:
  // Reads the file's footer. Throws HostIOError.
  explicit ParquetSource(std::string path);

  const std::string& Name() const override { return fName; }
  void Open(const std::vector<int>* columns, ArrowArrayStream* stream) override;
  // Texts come as the file declares them; Open gives dictionaries where the file has them.
  void OpenOriginal(const std::vector<int>* columns, ArrowArrayStream* stream) override;
  bool HasTypes() const override { return true; }
  std::int64_t CaseCount() const override { return fNCases; }
  int ColumnsAtATime() const override { return fNColumnsAtATime; }

 private:
  void Export(std::unique_ptr<parquet::arrow::FileReader> file, const std::vector<int>* columns,
              ArrowArrayStream* stream) const;

  std::string fName;
  FileStamp fStamp;
  std::int64_t fNCases = 0;
  int fNColumnsAtATime = 0;
};

}  // namespace MCHost
