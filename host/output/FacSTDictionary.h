// The string table: the displayed text of each key.
//
// The entries are built into the library from host/output/strings/texts.txt, one "key => text" a
// line. A key may have another text for one procedure, in the section under the procedure's name.
// A key without an entry is its own text, so plain sentences need none.
#pragma once

#include <string>

class FacSTDictionary {
 public:
  // Makes the entries for all procedures visible, which a new dictionary does anyway.
  void SetGlobalStringTable() { fProcedure.clear(); }

  // Puts the entries of one procedure before the common ones.
  void SetProcedure(std::string procedure) { fProcedure = std::move(procedure); }

  // The text of the key, its placeholders unfilled.
  std::string Lookup(const std::string& key) const;

  // True when there is an entry, here or among the common ones.
  bool Contains(const std::string& key) const { return Find(key) != nullptr; }

 private:
  const std::string* Find(const std::string& key) const;

  std::string fProcedure;
};
