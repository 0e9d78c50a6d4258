// Several sources as one table: their cases one after the other, their columns matched by name.
//
// A column that a source does not have is missing there, unless a folder that the source is in is
// called so. Types that go together become one that holds both (JoinedTypes.h); where they do not,
// sources that can give the column as texts do. Every difference that changes what a column holds
// is told.
#pragma once

#include <arrow/type_fwd.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/arrow/DataParts.h"
#include "host/arrow/JoinedTypes.h"
#include "host/data/IArrowSource.h"

namespace MCHost {

class JoinedSource final : public IArrowSource {
 public:
  // Opens a part; the columns named are to be given as texts where the part can do that.
  using OpenPart =
      std::function<std::unique_ptr<IArrowSource>(const DataPart&, const std::set<std::string>&)>;

  // `name` is what messages call the whole. Throws HostIOError.
  JoinedSource(std::string name, const std::vector<DataPart>& parts, OpenPart open);

  const std::string& Name() const override { return fName; }
  void Open(const std::vector<int>* columns, ArrowArrayStream* stream) override;
  void OpenOriginal(const std::vector<int>* columns, ArrowArrayStream* stream) override;
  bool HasTypes() const override;
  std::int64_t CaseCount() const override;
  bool IsReadOnce() const override;
  bool LookAgain() override;
  int ColumnsAtATime() const override;
  std::vector<std::string> Notes() const override;

 private:
  using Schema = std::shared_ptr<arrow::Schema>;
  using Places = std::unordered_map<std::string, std::size_t>;  // of columns, by their names

  struct Part {
    DataPart fFile;
    std::unique_ptr<IArrowSource> fpSource;
    std::set<std::string> fTexts{};  // the columns that were asked for as texts
  };
  class Batches;

  void Settle();
  std::vector<Schema> SchemasFor(JoinFor use) const;
  Schema Join(const std::vector<Schema>& schemas, JoinFor use) const;
  void AddKeys(const std::vector<Schema>& schemas, arrow::FieldVector& fields,
               Places& places) const;
  std::shared_ptr<arrow::DataType> KeyType(const std::string& key) const;
  static std::map<std::string, std::size_t> Clashes(const std::vector<Schema>& schemas);
  bool ReopenAsTexts(const std::vector<Schema>& schemas);
  void TellWhatIsMissing(const std::vector<Schema>& schemas);
  void OpenAs(JoinFor use, const std::vector<int>* columns, ArrowArrayStream* stream);

  std::string fName;
  OpenPart fOpen;
  std::vector<Part> fParts;
  bool fbLookedAgain = false;           // more of the parts is known than their start
  std::vector<std::string> fTextNotes;  // on columns that are read as texts
  std::vector<std::string> fNotes;
};

}  // namespace MCHost
