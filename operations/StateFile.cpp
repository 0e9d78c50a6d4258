#include "operations/StateFile.h"

#include "host/session/HostIOError.h"
#include "host/session/OutputFile.h"

namespace PredSelect {

namespace {

std::string Write(const ComponentFile& state, const std::string& path, bool xml) {
  if (state.fpNaive != nullptr) return WriteComponentFile(path, xml, *state.fpNaive);
  return WriteComponentFile(path, xml, *state.fpFeature,
                            state.fDictionary ? &*state.fDictionary : nullptr);
}

}  // namespace

ComponentFile LoadState(const std::string& path) {
  ComponentFile state;
  std::string place;
  const std::string trouble = ReadComponentFile(path, state, &place);
  if (!trouble.empty()) {
    throw MCHost::HostIOError(path, place, "cannot be used as a state: " + trouble);
  }
  return state;
}

void SaveState(const ComponentFile& state, const std::string& path) {
  MCHost::WriteWhole(path, [&](const std::string& temporary) {
    return Write(state, temporary, IsXMLStateName(path));
  });
}

}  // namespace PredSelect
