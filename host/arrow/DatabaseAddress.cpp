#include "host/arrow/DatabaseAddress.h"

#include <algorithm>
#include <iterator>

#include "host/arrow/DeclaredKinds.h"
#include "host/session/HostIOError.h"

namespace MCHost {

namespace {

constexpr char kInformation[] =
    "SELECT table_name FROM information_schema.tables WHERE table_schema = ";

using Kind = DatabaseKind;

constexpr Kind kKinds[] = {
    {"SQLite", "sqlite:", Kind::kFileByAddress, Kind::kOfCells, "libadbc_driver_sqlite.so",
     "adbc_driver_sqlite/libadbc_driver_sqlite.so", "adbc-driver-sqlite", "AdbcDriverInit",
     "SELECT name FROM sqlite_master WHERE type IN ('table', 'view') AND name NOT LIKE "
     "'sqlite\\_%' ESCAPE '\\' ORDER BY name",
     nullptr},
    {"DuckDB", "duckdb:", Kind::kFile, Kind::kOfColumns, "libduckdb.so", "_duckdb.cpython-*.so",
     "duckdb", "duckdb_adbc_init",
     "SELECT table_name FROM information_schema.tables WHERE table_schema = current_schema() "
     "ORDER BY table_name",
     kInformation},
    {"PostgreSQL", "postgresql:", Kind::kServer, Kind::kNoExactNumbers,
     "libadbc_driver_postgresql.so", "adbc_driver_postgresql/libadbc_driver_postgresql.so",
     "adbc-driver-postgresql", "AdbcDriverInit",
     "SELECT table_name FROM information_schema.tables WHERE table_schema = ANY "
     "(current_schemas(false)) ORDER BY table_name",
     kInformation},
};

const DatabaseKind* KindOf(const std::string& text) {
  const auto found =
      std::find_if(std::begin(kKinds), std::end(kKinds),
                   [&text](const DatabaseKind& kind) { return text.starts_with(kind.fPrefix); });
  return found != std::end(kKinds) ? found : nullptr;
}

// %20 and its like as the bytes that they stand for.
std::string Decoded(const std::string& text) {
  const auto digit = [](char c) {
    return c >= '0' && c <= '9'                     ? c - '0'
           : (c | 0x20) >= 'a' && (c | 0x20) <= 'f' ? (c | 0x20) - 'a' + 10
                                                    : -1;
  };
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isCode =
        text[i] == '%' && i + 2 < text.size() && digit(text[i + 1]) >= 0 && digit(text[i + 2]) >= 0;
    decoded += isCode ? static_cast<char>(digit(text[i + 1]) * 16 + digit(text[i + 2])) : text[i];
    if (isCode) i += 2;
  }
  return decoded;
}

// Text in quotes of a kind, those in it doubled.
std::string InQuotes(const std::string& text, char quote) {
  std::string quoted(1, quote);
  for (const char c : text) quoted.append(c == quote ? 2 : 1, c);
  return quoted + quote;
}

}  // namespace

bool IsDatabaseAddress(const std::string& text) { return KindOf(text) != nullptr; }

DatabaseAddress ReadDatabaseAddress(const std::string& text) {
  DatabaseAddress address{KindOf(text), {}, {}, {}};
  const bool isFile = address.fpKind->fPlace != DatabaseKind::kServer;
  const std::size_t question = std::min(text.find('?'), text.size());
  const std::size_t start = isFile ? std::string(address.fpKind->fPrefix).size() : 0;
  address.fPlace = text.substr(start, question - start);
  std::string others;
  for (std::size_t at = question + 1; at < text.size();) {
    const std::size_t end = std::min(text.find('&', at), text.size());
    const std::string word = text.substr(at, end - at);
    if (word.starts_with("table=")) {
      address.fTable = Decoded(word.substr(6));
    } else if (word.starts_with("schema=")) {
      address.fSchema = Decoded(word.substr(7));
    } else if (isFile) {
      throw HostIOError(WithoutPassword(text), "",
                        Quoted(word) + " is neither table=NAME nor schema=NAME");
    } else {
      others += (others.empty() ? "?" : "&") + word;
    }
    at = end + 1;
  }
  address.fPlace += others;
  return address;
}

std::string WithoutPassword(std::string address) {
  if (!IsDatabaseAddress(address)) return address;
  const std::size_t host = std::min(address.find("//"), address.size() - 2) + 2;
  const std::size_t end = std::min(address.find_first_of("/?", host), address.size());
  const std::size_t at = address.substr(0, end).rfind('@');
  const std::size_t colon = address.find(':', host);
  if (at != std::string::npos && colon < at) address.erase(colon, at - colon);
  const std::size_t word = address.find("password=");
  if (word == std::string::npos) return address;
  const std::size_t wordEnd = std::min(address.find('&', word), address.size());
  return address.replace(word, wordEnd - word, "password=...");
}

std::string QuotedName(const std::string& name) { return InQuotes(name, '"'); }

std::string QuotedText(const std::string& text) { return InQuotes(text, '\''); }

}  // namespace MCHost
