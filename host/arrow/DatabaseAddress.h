// Which database, and what of it: "sqlite:file.db?table=t", "duckdb:file.duckdb?schema=s&table=t",
// "postgresql://user@host/name?table=t".
#pragma once

#include <string>
#include <vector>

namespace MCHost {

// A kind of database: how its driver is found, told where the data are, and asked for tables.
struct DatabaseKind {
  // What stands behind the prefix: a path that the driver wants as an address or as it is, or more
  // of an address.
  enum Place { kFileByAddress, kFile, kServer };
  // What the driver knows of types: all; nothing, as cells have types of their own; all but those
  // of exact numbers.
  enum Types { kOfColumns, kOfCells, kNoExactNumbers };

  const char* fName;    // as messages say it
  const char* fPrefix;  // of an address
  Place fPlace;
  Types fTypes;
  const char* fLibrary;       // the driver's, as a linker knows it
  const char* fInPython;      // a pattern of the same in the packages of a Python environment
  const char* fPackage;       // the Python package that brings it
  const char* fEntry;         // its entry point
  const char* fListTables;    // a query for their names
  const char* fListInSchema;  // the same before a schema's name, null where there are none
};

struct DatabaseAddress {
  const DatabaseKind* fpKind;
  std::string fPlace;   // a path, or the address without what is ours in it
  std::string fTable;   // empty for none
  std::string fSchema;  // the one that the table is in, empty where the database knows
};

// Whether the words are an address at all.
bool IsDatabaseAddress(const std::string& text);

// Throws HostIOError for words that the address cannot have. REQUIRES: IsDatabaseAddress().
DatabaseAddress ReadDatabaseAddress(const std::string& text);

// The text without the password that an address may have before its host, or among its words; any
// other text is itself.
std::string WithoutPassword(std::string address);

// A name in double quotes, a text in single ones, as SQL takes them literally.
std::string QuotedName(const std::string& name);
std::string QuotedText(const std::string& text);

}  // namespace MCHost
