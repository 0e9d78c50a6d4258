#include "host/data/KOVA_DataSource.h"

#include <utf8proc.h>

#include <cstdlib>
#include <memory>

#include "common/MCAssert.h"

namespace {

constexpr char kSource[] = "host/data/KOVA_DataSource";

// Letters without their case; text that is not UTF-8 stays as it is.
std::string FoldCase(const std::string& text) {
  utf8proc_uint8_t* folded = nullptr;
  const auto size =
      utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                   static_cast<utf8proc_ssize_t>(text.size()), &folded, UTF8PROC_CASEFOLD);
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(folded, &std::free);
  if (size < 0) return text;
  return {reinterpret_cast<const char*>(folded), static_cast<std::size_t>(size)};
}

}  // namespace

int KOVA_DataSource::FindVariable(const std::string& name) const {
  for (int i = 0; i < ColumnCount(); ++i) {
    if (GetVariable(i).GetName() == name) return i;
  }
  const std::string folded = FoldCase(name);
  int found = -1;
  for (int i = 0; i < ColumnCount(); ++i) {
    if (FoldCase(GetVariable(i).GetName()) != folded) continue;
    if (found >= 0) return -1;
    found = i;
  }
  return found;
}

int KOVA_DataSource::MakeVariable(const std::string& name, int type) {
  for (int i = 0; i < ColumnCount(); ++i) {
    MCCommon::Assert(GetVariable(i).GetName() != name, "variable name is new", kSource);
  }
  return fpTable->AddVariable(KOVA_Variable(name, type));
}
