#include "operations/c/Arguments.h"

#include "host/text/Utf8.h"
#include "operations/RequestError.h"

namespace PredSelectC {

std::string PathArgument(const char* path, const char* name) { return &Given(path, name); }

std::string TextArgument(const char* text, const char* name) {
  std::string given = &Given(text, name);
  if (!MCHost::IsUtf8(given)) throw PredSelect::RequestError(name, "the text is not UTF-8");
  return given;
}

std::string TextArgument(const char* text, const char* name, const char* otherwise) {
  return TextArgument(text != nullptr ? text : otherwise, name);
}

std::string_view BytesArgument(const predselect_bytes* bytes, const char* name) {
  const predselect_bytes& given = Given(bytes, name);
  if (given.size > 0) Given(static_cast<const char*>(given.data), name);
  return {static_cast<const char*>(given.data), given.size};
}

std::vector<std::string> TextArguments(const char* const* texts, std::size_t n, const char* name) {
  std::vector<std::string> given;
  if (n > 0) Given(texts, name);
  for (std::size_t i = 0; i < n; ++i) given.push_back(TextArgument(texts[i], name));
  return given;
}

void CheckStruct(const void* bytes, std::size_t givenSize, std::size_t knownSize) {
  // Fields are as wide as struct_size or fill up to it; a struct of kilobytes was not initialised.
  constexpr std::size_t kMost = 4096;
  if (givenSize == 0 || givenSize % sizeof(givenSize) != 0 || givenSize > kMost) {
    throw Misuse("struct_size is not set to the size of the struct");
  }
  const auto* byte = static_cast<const unsigned char*>(bytes);
  for (std::size_t i = knownSize; i < givenSize; ++i) {
    if (byte[i] != 0) throw Misuse("the options say more than this version of the library knows");
  }
}

}  // namespace PredSelectC
