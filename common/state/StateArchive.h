// Saved state, one class at a time: four archives with the same vocabulary, so that a class lists
// its fields once, in order, and that list serves writing and reading, binary and XML.
//
//   template <class Archive, class Self>
//   void NBNumericInterval::Fields(Archive& archive, Self& self) {
//     archive.Double(self.fLeft);
//     archive.Double(self.fRight);
//   }
//   MC_STATE_OPERATIONS(NBNumericInterval, "NBNumInt", "NBNumericInterval")
//
// The binary form of an object is its tag, without length or end, and its fields in the machine's
// byte order: Int and Flag 4 bytes, Long and Double 8, Text a 4-byte length and its bytes, a list a
// 4-byte count and its elements, an object its own form. In XML an object is an Object element,
// Int, Flag, Long and counts are Long elements, Double is Double, Text is String.
//
// A reader that does not find what it asks for writes one line to standard error ("Error reading"
// or, in XML, "Failure reading", with the class; see QuietReading) and throws IOException; the
// object is then fit only to be destroyed. A count is checked against what the stream can still
// hold before anything is allocated. A writer leaves a failed stream failed.
#pragma once

#include <cmath>
#include <cstdint>
#include <fstream>
#include <limits>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "common/state/StateName.h"
#include "common/xml/XMLObj.h"

// Of the many NaNs only one is stored, so that equal states have equal bytes.
inline double OneNaN(double value) {
  return std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value;
}

class BinaryStateWriter {
 public:
  static constexpr bool kReading = false;

  // Writes the tag.
  BinaryStateWriter(std::fstream& os, const StateName& name);

  template <class T>
  void Int(const T& value) {
    Raw(static_cast<std::int32_t>(value));
  }
  template <class T>
  void Long(const T& value) {
    Raw(static_cast<std::int64_t>(value));
  }
  void Flag(bool value) { Int(value); }
  void Double(double value) { Raw(value); }
  void AnyDouble(double value) { Raw(OneNaN(value)); }
  void Text(const std::string& value);
  // Zero bytes that only the binary form has.
  void Gap(int bytes);
  // The count of a list; its elements follow.
  template <class List>
  void Size(const List& list, int /*bytesPerElement*/) {
    Int(list.size());
  }
  template <class T>
  void Object(const T& object) {
    fBytes += object.WriteObject(fOs);
  }
  void Check(bool /*valid*/) const {}

  // Ends the object; returns the bytes of all of it.
  int Finish() const { return static_cast<int>(fBytes); }

 private:
  template <class T>
  void Raw(T value) {
    Bytes(reinterpret_cast<const char*>(&value), sizeof value);
  }
  void Bytes(const char* bytes, std::size_t n);

  std::fstream& fOs;
  std::int64_t fBytes = 0;
};

class XMLStateWriter {
 public:
  static constexpr bool kReading = false;

  XMLStateWriter(std::ostream& os, const StateName& name, int indent);

  template <class T>
  void Int(const T& value) {
    Long(static_cast<std::int32_t>(value));
  }
  template <class T>
  void Long(const T& value) {
    fObject.WriteSubElement(fOs, static_cast<std::int64_t>(value));
  }
  void Flag(bool value) { Long(value); }
  void Double(double value) { fObject.WriteSubElement(fOs, value); }
  void AnyDouble(double value) { fObject.WriteSubElement(fOs, OneNaN(value)); }
  void Text(const std::string& value) { fObject.WriteSubElement(fOs, value); }
  void Gap(int /*bytes*/) const {}
  template <class List>
  void Size(const List& list, int /*bytesPerElement*/) {
    Long(list.size());
  }
  template <class T>
  void Object(const T& object) {
    object.WriteObjectXML(fOs, fObject.InnerIndent());
  }
  void Check(bool /*valid*/) const {}

  int Finish();

 private:
  std::ostream& fOs;
  MCCommonXML::XMLObj fObject;
};

class BinaryStateReader {
 public:
  static constexpr bool kReading = true;

  // Reads the tag.
  BinaryStateReader(std::fstream& is, StateName name);
  // Reads that of the form which the object has, of the forms of one class.
  BinaryStateReader(std::fstream& is, std::span<const StateName> forms);
  std::size_t GetForm() const { return fForm; }

  template <class T>
  void Int(T& value) {
    std::int32_t stored = 0;
    Raw(stored);
    value = static_cast<T>(stored);
  }
  template <class T>
  void Long(T& value) {
    std::int64_t stored = 0;
    Raw(stored);
    value = static_cast<T>(stored);
  }
  // 0 or 1.
  void Flag(bool& value);
  // A double that is finite; AnyDouble also takes infinities and NaN.
  void Double(double& value);
  void AnyDouble(double& value);
  void Text(std::string& value);
  void Gap(int bytes);
  // Makes the list as long as its count; `bytesPerElement` is the least that one takes.
  template <class List>
  void Size(List& list, int bytesPerElement) {
    list.resize(Count(bytesPerElement));
  }
  template <class T>
  void Object(T& object) {
    fBytes += object.ReadObject(fIs);
  }
  // Which of the names the next object has, by position.
  std::size_t Which(std::span<const StateName> names);
  // Fails unless the value that was read makes sense.
  void Check(bool valid) const {
    if (!valid) Fail();
  }

  int Finish() const { return static_cast<int>(fBytes); }

 private:
  template <class T>
  void Raw(T& value) {
    Bytes(reinterpret_cast<char*>(&value), sizeof value);
  }
  void Bytes(char* bytes, std::size_t n);
  std::size_t Count(int bytesPerElement);
  [[noreturn]] void Fail() const;

  std::fstream& fIs;
  StateName fName;
  std::size_t fForm = 0;
  std::int64_t fBytes = 0;
};

class XMLStateReader {
 public:
  static constexpr bool kReading = true;

  XMLStateReader(std::ifstream& is, StateName name);
  XMLStateReader(std::ifstream& is, std::span<const StateName> forms);
  std::size_t GetForm() const { return fForm; }

  template <class T>
  void Int(T& value) {
    const std::int64_t stored = Integer();
    Check(stored >= INT32_MIN && stored <= INT32_MAX);
    value = static_cast<T>(stored);
  }
  template <class T>
  void Long(T& value) {
    value = static_cast<T>(Integer());
  }
  void Flag(bool& value);
  void Double(double& value);
  void AnyDouble(double& value);
  void Text(std::string& value);
  void Gap(int /*bytes*/) const {}
  template <class List>
  void Size(List& list, int /*bytesPerElement*/) {
    list.resize(Count());
  }
  template <class T>
  void Object(T& object) {
    object.ReadObjectXML(fIs);
  }
  std::size_t Which(std::span<const StateName> names);
  void Check(bool valid) const {
    if (!valid) Fail();
  }

  int Finish();

 private:
  std::int64_t Integer();
  std::size_t Count();
  [[noreturn]] void Fail() const;

  std::ifstream& fIs;
  StateName fName;
  std::size_t fForm = 0;
};

// Defines the four operations of a class that has Fields. They return the bytes of the binary form.
#define MC_STATE_OPERATIONS(Class, tag, element)                   \
  namespace {                                                      \
  const StateName k##Class{#Class, tag, element};                  \
  }                                                                \
  int Class::WriteObject(std::fstream& os) const {                 \
    BinaryStateWriter archive(os, k##Class);                       \
    Fields(archive, *this);                                        \
    return archive.Finish();                                       \
  }                                                                \
  int Class::ReadObject(std::fstream& is) {                        \
    BinaryStateReader archive(is, k##Class);                       \
    Fields(archive, *this);                                        \
    return archive.Finish();                                       \
  }                                                                \
  void Class::WriteObjectXML(std::ostream& os, int indent) const { \
    XMLStateWriter archive(os, k##Class, indent);                  \
    Fields(archive, *this);                                        \
    archive.Finish();                                              \
  }                                                                \
  void Class::ReadObjectXML(std::ifstream& is) {                   \
    XMLStateReader archive(is, k##Class);                          \
    Fields(archive, *this);                                        \
    archive.Finish();                                              \
  }

// The same of a class that has grown: Fields(archive, self, grown), and IsGrown() says whether an
// object holds what only the newer form tells. Others are written as ever, so that older readers
// know them.
#define MC_STATE_OPERATIONS_OF_TWO_FORMS(Class, tag, element, newTag, newElement)      \
  namespace {                                                                          \
  const StateName k##Class[] = {{#Class, tag, element}, {#Class, newTag, newElement}}; \
  }                                                                                    \
  int Class::WriteObject(std::fstream& os) const {                                     \
    BinaryStateWriter archive(os, k##Class[IsGrown() ? 1 : 0]);                        \
    Fields(archive, *this, IsGrown());                                                 \
    return archive.Finish();                                                           \
  }                                                                                    \
  int Class::ReadObject(std::fstream& is) {                                            \
    BinaryStateReader archive(is, k##Class);                                           \
    Fields(archive, *this, archive.GetForm() == 1);                                    \
    return archive.Finish();                                                           \
  }                                                                                    \
  void Class::WriteObjectXML(std::ostream& os, int indent) const {                     \
    XMLStateWriter archive(os, k##Class[IsGrown() ? 1 : 0], indent);                   \
    Fields(archive, *this, IsGrown());                                                 \
    archive.Finish();                                                                  \
  }                                                                                    \
  void Class::ReadObjectXML(std::ifstream& is) {                                       \
    XMLStateReader archive(is, k##Class);                                              \
    Fields(archive, *this, archive.GetForm() == 1);                                    \
    archive.Finish();                                                                  \
  }
