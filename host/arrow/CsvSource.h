// A CSV or TSV file, or the text of one held in memory.
#pragma once

#include <memory>
#include <string>

#include "host/arrow/CsvInspector.h"
#include "host/data/IArrowSource.h"

namespace MCHost {

class CsvSource final : public IArrowSource {
 public:
  // Checks the file and settles what its columns hold. Throws HostIOError.
  CsvSource(std::string path, CsvRules rules);

  // The same for a text that is already there. `name` names it in messages.
  CsvSource(std::string name, std::string text, CsvRules rules);

  const std::string& Name() const override { return fName; }
  void Open(const std::vector<int>* columns, ArrowArrayStream* stream) override;
  std::int64_t CaseCount() const override { return fInspector.CaseCount(); }
  std::vector<std::string> Notes() const override;

 private:
  void InspectFile();

  std::string fName;
  bool fbFile;
  std::string fText;
  CsvRules fRules;
  CsvInspector fInspector;
};

}  // namespace MCHost
