#include "host/session/OutputGroup.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <utility>

#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

thread_local OutputGroup* gpCurrent = nullptr;

void Check(const FinishedFile& file, int error) {
  if (error == 0) return;
  throw HostIOError(file.fTarget, "", std::string("cannot be written: ") + std::strerror(error));
}

}  // namespace

bool PlaceFiles(std::vector<FinishedFile> files, const std::function<bool()>& isCancelled) {
  for (const FinishedFile& file : files) Check(file, file.fpFile->Settle());
  if (isCancelled && isCancelled()) return false;
  for (std::size_t i = 0; i < files.size(); ++i) {
    const bool isLast = i + 1 == files.size();
    const int error = files[i].fpFile->TakePlaceOf(files[i].fPlace, !isLast);
    if (error == 0) continue;
    for (std::size_t done = i; done > 0; --done) {
      files[done - 1].fpFile->GiveBack(files[done - 1].fPlace);
    }
    Check(files[i], error);
  }
  return true;
}

OutputGroup::OutputGroup() : fpAround(std::exchange(gpCurrent, this)) {}

OutputGroup::~OutputGroup() { gpCurrent = fpAround; }

OutputGroup* OutputGroup::Current() { return gpCurrent; }

void OutputGroup::Take(FinishedFile file) { fFiles.push_back(std::move(file)); }

void OutputGroup::MakeFolder(const std::string& path) {
  if (fpAround != nullptr) return fpAround->MakeFolder(path);
  fFolders.push_back(std::make_unique<NewFolder>(path));
}

void OutputGroup::Fail() {
  fbFailed = true;
  if (fpAround != nullptr) fpAround->Fail();
}

bool OutputGroup::Commit(const std::function<bool()>& isCancelled) {
  std::vector<FinishedFile> files = std::exchange(fFiles, {});
  if (files.empty()) return !fbLost;
  if (fpAround != nullptr && !fbFailed) {
    std::ranges::move(files, std::back_inserter(fpAround->fFiles));
    return true;
  }
  fbLost = true;
  if (!fbFailed && PlaceFiles(std::move(files), isCancelled)) fbLost = false;
  return !fbLost;
}

}  // namespace MCHost
