// The string table: the displayed text of each key.
//
// The entries are built into the library from host/output/strings/texts.txt, which says how they
// are written. A key may have another text for one procedure. Every fixed text that a user reads
// has an entry; a key without one shows itself.
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
