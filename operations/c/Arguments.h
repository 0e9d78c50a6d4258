// Arguments as C callers give them, checked and turned into values.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "operations/c/Guard.h"

namespace PredSelectC {

// What a pointer points to. Throws Misuse, naming the argument, for NULL.
template <class T>
T& Given(T* pointer, const char* name) {
  if (pointer == nullptr) throw Misuse(std::string(name) + " is NULL");
  return *pointer;
}

// A path as it stands. Throws Misuse for NULL.
std::string PathArgument(const char* path, const char* name);

// A text. Throws Misuse for NULL, RequestError for one that is not UTF-8.
std::string TextArgument(const char* text, const char* name);

// The same, with what NULL stands for.
std::string TextArgument(const char* text, const char* name, const char* otherwise);

// A list of texts. Throws as TextArgument does.
std::vector<std::string> TextArguments(const char* const* texts, std::size_t n, const char* name);

// Throws Misuse for a size that no struct of pointers can have, and for a struct that has something
// set behind the fields that are known.
void CheckStruct(const void* bytes, std::size_t givenSize, std::size_t knownSize);

// A struct that begins with struct_size, as far as the caller's reaches; the rest, or all of it for
// NULL, is zero. Throws Misuse.
template <class Options>
Options GivenOptions(const Options* options) {
  Options known{};
  if (options == nullptr) return known;
  CheckStruct(options, options->struct_size, sizeof(Options));
  std::memcpy(&known, options, std::min(options->struct_size, sizeof(Options)));
  return known;
}

// Bytes. Throws Misuse for NULL, or for no data where there should be some.
std::string_view BytesArgument(const predselect_bytes* bytes, const char* name);

// Sets what a failed call is to leave behind.
template <class T>
void Clear(T** out) noexcept {
  if (out != nullptr) *out = nullptr;
}

}  // namespace PredSelectC
