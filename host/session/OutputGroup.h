// Files that belong together: all take their places, or none does.
//
// While a group is open, OutputFile::Commit() of its thread hands it whole files in place of
// putting them where they belong; the group's own Commit() does that, for all of them at once. A
// group that is opened while another one is gives its files to that one.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/session/NewFolder.h"
#include "host/session/TemporaryFile.h"

namespace MCHost {

// A whole file that waits for its place.
struct FinishedFile {
  std::unique_ptr<TemporaryFile> fpFile;
  std::string fPlace;
  std::string fTarget;  // the same as the user knows it
};

// Puts the files on the disk and then, unless that is no longer wanted by then, into their places,
// in their order. Returns whether they are there. Throws HostIOError that names one which cannot be
// written; then all places have what they had before (on a file system that exchanges names).
bool PlaceFiles(std::vector<FinishedFile> files, const std::function<bool()>& isCancelled = {});

class OutputGroup {
 public:
  OutputGroup();
  OutputGroup(const OutputGroup&) = delete;
  OutputGroup& operator=(const OutputGroup&) = delete;
  // What was not committed is gone.
  ~OutputGroup();

  // The innermost group that is open on this thread; null for none.
  static OutputGroup* Current();

  void Take(FinishedFile file);

  // Makes a folder for some of the files; it is gone with the group if it is empty then. Throws
  // HostIOError.
  void MakeFolder(const std::string& path);

  // One of the files could not be made: no other is to take its place, nor one of the group around.
  void Fail();

  // Returns whether all files that there have been are in their places, or with the group around;
  // false where one has failed or they were no longer wanted. Throws what PlaceFiles throws. No
  // file is left in the group.
  bool Commit(const std::function<bool()>& isCancelled = {});

 private:
  OutputGroup* fpAround;
  std::vector<std::unique_ptr<NewFolder>> fFolders;
  std::vector<FinishedFile> fFiles;
  bool fbFailed = false;
  bool fbLost = false;  // there were files that have not taken their places
};

}  // namespace MCHost
