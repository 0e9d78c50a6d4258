#include "host/arrow/DataParts.h"

#include <glob.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>

#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

// In letters of any size.
bool EndsAs(std::string name, const std::string& extension) {
  for (char& c : name) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  return name.ends_with(extension);
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Takes a run of digits away, without its zeros in front.
std::string TakeNumber(const std::string& text, std::size_t& at) {
  const std::size_t start = at;
  while (at < text.size() && IsDigit(text[at])) ++at;
  const std::string digits = text.substr(start, at - start);
  return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
}

std::vector<std::string> FilesOfPattern(const std::string& pattern) {
  glob_t found{};
  std::vector<std::string> files;
  if (glob(pattern.c_str(), GLOB_BRACE, nullptr, &found) == 0) {
    files.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
  }
  globfree(&found);
  std::erase_if(files, [](const std::string& file) {
    std::error_code error;
    return std::filesystem::is_directory(file, error);
  });
  if (files.empty()) throw HostIOError(pattern, "", "no file fits the pattern");
  return files;
}

// Hidden files and those that begin with an underscore are what other programs note about the data.
std::vector<std::string> FilesOfFolder(const std::string& folder,
                                       const std::vector<std::string>& extensions) {
  std::vector<std::string> files;
  std::error_code error;
  std::filesystem::recursive_directory_iterator entry(folder, error);
  for (; !error && entry != std::filesystem::end(entry); entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    const bool isAside = name[0] == '.' || name[0] == '_';
    std::error_code unknown;
    if (entry->is_directory(unknown)) {
      if (isAside) entry.disable_recursion_pending();
      continue;
    }
    const bool isData =
        std::any_of(extensions.begin(), extensions.end(),
                    [&name](const std::string& extension) { return EndsAs(name, extension); });
    if (isData && !isAside) files.push_back(entry->path().string());
  }
  if (error) throw HostIOError(folder, "", error.message());
  if (files.empty())
    throw HostIOError(folder, "", "the folder holds no file that is called as data");
  return files;
}

// %41 as A, as such folders are called.
std::string Unescaped(const std::string& text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const std::string code = text.substr(std::min(at + 1, text.size()), 2);
    const bool isCode = text[at] == '%' && code.size() == 2 &&
                        code.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    plain += isCode ? static_cast<char>(std::stoi(code, nullptr, 16)) : text[at];
    if (isCode) at += 2;
  }
  return plain;
}

DataPart PartOf(const std::string& path) {
  DataPart part{path, {}};
  for (const auto& folder : std::filesystem::path(path).parent_path()) {
    const std::string name = folder.string();
    const std::size_t equals = name.find('=');
    if (equals == 0 || equals == std::string::npos) continue;
    std::optional<std::string> value = Unescaped(name.substr(equals + 1));
    if (value->empty() || *value == "__HIVE_DEFAULT_PARTITION__") value.reset();
    part.fKeys.emplace_back(Unescaped(name.substr(0, equals)), std::move(value));
  }
  return part;
}

}  // namespace

std::vector<std::string> JoinNotes(
    const std::vector<std::pair<std::string, std::vector<std::string>>>& notes) {
  std::map<std::string, std::size_t> nFiles;
  for (const auto& [file, own] : notes) {
    for (const std::string& note : std::set(own.begin(), own.end())) ++nFiles[note];
  }
  std::vector<std::string> joined;
  for (const auto& [file, own] : notes) {
    for (const std::string& note : own) {
      const bool isCommon = nFiles[note] == notes.size();
      if (!isCommon) joined.push_back(file + ": " + note);
      if (isCommon && file == notes.front().first) joined.push_back(note);
    }
  }
  return joined;
}

bool IsNaturallyBefore(const std::string& a, const std::string& b) {
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < a.size() && j < b.size()) {
    if (IsDigit(a[i]) && IsDigit(b[j])) {
      const std::string left = TakeNumber(a, i);
      const std::string right = TakeNumber(b, j);
      if (left.size() != right.size()) return left.size() < right.size();
      if (left != right) return left < right;
    } else {
      if (a[i] != b[j]) return a[i] < b[j];
      ++i;
      ++j;
    }
  }
  return j < b.size() || (i == a.size() && a < b);
}

std::vector<DataPart> FindDataParts(const std::string& path,
                                    const std::vector<std::string>& extensions) {
  std::error_code error;
  std::vector<std::string> files;
  if (std::filesystem::is_directory(path, error)) {
    files = FilesOfFolder(path, extensions);
  } else if (path.find_first_of("*?[{") != std::string::npos &&
             !std::filesystem::exists(path, error)) {
    files = FilesOfPattern(path);
  }
  std::sort(files.begin(), files.end(), IsNaturallyBefore);
  // Alternatives of a pattern may well mean the same file.
  files.erase(std::unique(files.begin(), files.end()), files.end());
  std::vector<DataPart> parts;
  for (const std::string& file : files) parts.push_back(PartOf(file));
  return parts;
}

}  // namespace MCHost
