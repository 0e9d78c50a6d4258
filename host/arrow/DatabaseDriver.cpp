#include "host/arrow/DatabaseDriver.h"

#include <dlfcn.h>
#include <glob.h>

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <system_error>

#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

namespace fs = std::filesystem;

// Files of a pattern.
std::vector<std::string> FilesLike(const std::string& pattern) {
  glob_t found{};
  std::vector<std::string> files;
  if (glob(pattern.c_str(), 0, nullptr, &found) == 0) {
    files.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
  }
  globfree(&found);
  return files;
}

// The library at a place, if there is one.
std::vector<std::string> LibrariesAt(const std::string& place, const DatabaseKind& kind) {
  std::error_code error;
  if (fs::is_regular_file(place, error)) return {place};
  std::vector<std::string> found = FilesLike(place + "/" + kind.fLibrary);
  for (const char* folder : {"/", "/lib/python3*/site-packages/"}) {
    for (std::string& file : FilesLike(place + folder + kind.fInPython)) {
      found.push_back(std::move(file));
    }
  }
  return found;
}

// An extension of the interpreter leaves that one's own symbols to it. Their library is loaded
// where it is installed; nothing of it is called.
void LoadInterpreter(const std::string& library) {
  const std::string mark = ".cpython-3";
  const std::size_t at = library.find(mark);
  if (at == std::string::npos) return;
  const std::size_t start = at + mark.size();
  const std::string version = library.substr(start, library.find('-', start) - start);
  dlopen(("libpython3." + version + ".so.1.0").c_str(), RTLD_LAZY | RTLD_GLOBAL);
}

void* OpenLibrary(const std::string& library, std::string& fault) {
  LoadInterpreter(library);
  void* opened = dlopen(library.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (opened == nullptr && fault.empty()) {
    const char* const text = dlerror();
    fault = text != nullptr ? text : "";
  }
  return opened;
}

void* FindLibrary(const DatabaseKind& kind, const std::vector<std::string>& places,
                  std::string& fault) {
  for (const std::string& place : places) {
    for (const std::string& library : LibrariesAt(place, kind)) {
      if (void* const opened = OpenLibrary(library, fault)) return opened;
    }
  }
  std::string unknown = "-";  // that the linker knows none says nothing
  return OpenLibrary(kind.fLibrary, unknown);
}

std::unique_ptr<AdbcDriver> Load(const DatabaseKind& kind, const std::vector<std::string>& places,
                                 const std::string& source) {
  std::string fault;
  void* const library = FindLibrary(kind, places, fault);
  const std::string name(kind.fName);
  if (library == nullptr) {
    throw HostIOError(source, "",
                      name + " data are read through the driver " + kind.fLibrary +
                          ", which cannot be loaded" + (fault.empty() ? "" : " (" + fault + ")") +
                          ": install it (\"pip install " + kind.fPackage +
                          "\" brings it) and name its file, its folder or its Python environment "
                          "with --driver");
  }
  auto driver = std::make_unique<AdbcDriver>();
  AdbcError error{};
  const auto entry = reinterpret_cast<AdbcDriverInit>(dlsym(library, kind.fEntry));
  if (entry == nullptr || entry(kAdbcVersion, driver.get(), &error) != 0) {
    throw HostIOError(source, "", "the driver of " + name + " data is not one of ADBC 1.0");
  }
  return driver;
}

}  // namespace

AdbcDriver& LoadDriver(const DatabaseKind& kind, const std::vector<std::string>& places,
                       const std::string& source) {
  static std::mutex loading;
  static auto* const loaded = new std::map<std::string, std::unique_ptr<AdbcDriver>>();
  const std::lock_guard lock(loading);
  std::unique_ptr<AdbcDriver>& driver = (*loaded)[kind.fName];
  if (driver == nullptr) driver = Load(kind, places, source);
  return *driver;
}

}  // namespace MCHost
