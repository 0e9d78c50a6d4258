// A file that is written beside the place that it will take.
//
// It has no name where the file system has such files, so that a killed program leaves nothing.
// Elsewhere, and for the moment between naming and renaming, it is called
// ".predselect-<process>-<number>.tmp" and locked while its writer lives; the next temporary file
// in the folder removes one that nobody locks any more.
#pragma once

#include <sys/types.h>

#include <string>

namespace MCHost {

class TemporaryFile {
 public:
  // Not open (Descriptor() is below 0) where the folder takes no file; errno says why.
  explicit TemporaryFile(std::string folder);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  // Removes the file unless it has taken its place, or what it has taken its place from.
  ~TemporaryFile();

  int Descriptor() const { return fDescriptor; }
  // For what opens files by name.
  std::string Path() const { return fName.empty() ? DescriptorPath() : fName; }
  void SetPermissions(mode_t mode) const;

  // Puts the whole file on the disk, under a name. 0, or the error. REQUIRES: the file is open.
  int Settle();

  // Puts the file in the place of `target`, in one step. 0, or the error; the target is then
  // untouched. `mayReturn`: what was there is kept as long as this object lives, where the file
  // system can exchange names. REQUIRES: Settle().
  int TakePlaceOf(const std::string& target, bool mayReturn);

  // Undoes what TakePlaceOf(target, true) has done.
  void GiveBack(const std::string& target);

 private:
  std::string DescriptorPath() const;
  void OpenUnnamed();
  void OpenNamed();
  bool GiveName();
  void TakeName(std::string name);
  void ForgetName();

  enum class Left { kNothing, kOldFile, kNoFile };  // in the file's own place, by taking another

  std::string fFolder;
  std::string fName;  // empty when there is none (yet, or any more)
  int fDescriptor = -1;
  int fSlot = -1;
  Left fLeft = Left::kNothing;
};

}  // namespace MCHost
