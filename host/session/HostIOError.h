// The one way in which the host reports that data could not be read or written: which file, where
// in it, and why. Thrown by tables and file formats, turned into a message and an exit code at the
// edge of the application, or into a status where a procedure polls a case stream.
#pragma once

#include <stdexcept>
#include <string>

namespace MCHost {

class HostIOError : public std::runtime_error {
 public:
  // `place` is a line, a column or both in words, empty when there is none.
  HostIOError(std::string file, std::string place, std::string reason)
      : std::runtime_error(file + (place.empty() ? "" : ", " + place) + ": " + reason),
        fFile(std::move(file)),
        fPlace(std::move(place)),
        fReason(std::move(reason)) {}

  const std::string& File() const { return fFile; }
  const std::string& Place() const { return fPlace; }
  const std::string& Reason() const { return fReason; }

 private:
  std::string fFile;
  std::string fPlace;
  std::string fReason;
};

}  // namespace MCHost
