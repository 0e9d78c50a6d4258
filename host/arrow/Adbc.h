// The part of the Arrow database connectivity interface (ADBC 1.0.0) that reading needs: what a
// driver fills when it is loaded. The layout is the interface's and must not be changed.
#pragma once

#include <cstddef>
#include <cstdint>

struct ArrowArrayStream;

extern "C" {

struct AdbcError {
  char* message;
  std::int32_t vendor_code;
  char sqlstate[5];
  void (*release)(AdbcError* error);
};

struct AdbcDriver;

// What belongs to the driver, and which one it is: the same for all three.
struct AdbcDatabase {
  void* private_data;
  AdbcDriver* private_driver;
};
struct AdbcConnection {
  void* private_data;
  AdbcDriver* private_driver;
};
struct AdbcStatement {
  void* private_data;
  AdbcDriver* private_driver;
};

using AdbcStatusCode = std::uint8_t;  // 0 for what went well
using AdbcFunction = void (*)();      // one that is not called here

struct AdbcDriver {
  void* private_data;
  void* private_manager;
  AdbcStatusCode (*release)(AdbcDriver*, AdbcError*);

  AdbcStatusCode (*DatabaseInit)(AdbcDatabase*, AdbcError*);
  AdbcStatusCode (*DatabaseNew)(AdbcDatabase*, AdbcError*);
  AdbcStatusCode (*DatabaseSetOption)(AdbcDatabase*, const char*, const char*, AdbcError*);
  AdbcStatusCode (*DatabaseRelease)(AdbcDatabase*, AdbcError*);

  AdbcFunction ConnectionCommit;
  AdbcFunction ConnectionGetInfo;
  AdbcFunction ConnectionGetObjects;
  AdbcFunction ConnectionGetTableSchema;
  AdbcFunction ConnectionGetTableTypes;
  AdbcStatusCode (*ConnectionInit)(AdbcConnection*, AdbcDatabase*, AdbcError*);
  AdbcStatusCode (*ConnectionNew)(AdbcConnection*, AdbcError*);
  AdbcFunction ConnectionSetOption;
  AdbcFunction ConnectionReadPartition;
  AdbcStatusCode (*ConnectionRelease)(AdbcConnection*, AdbcError*);
  AdbcFunction ConnectionRollback;

  AdbcFunction StatementBind;
  AdbcFunction StatementBindStream;
  AdbcStatusCode (*StatementExecuteQuery)(AdbcStatement*, ArrowArrayStream*, std::int64_t*,
                                          AdbcError*);
  AdbcFunction StatementExecutePartitions;
  AdbcFunction StatementGetParameterSchema;
  AdbcStatusCode (*StatementNew)(AdbcConnection*, AdbcStatement*, AdbcError*);
  AdbcFunction StatementPrepare;
  AdbcStatusCode (*StatementRelease)(AdbcStatement*, AdbcError*);
  AdbcFunction StatementSetOption;
  AdbcStatusCode (*StatementSetSqlQuery)(AdbcStatement*, const char*, AdbcError*);
  AdbcFunction StatementSetSubstraitPlan;
};

using AdbcDriverInit = AdbcStatusCode (*)(int version, void* driver, AdbcError* error);

}  // extern "C"

inline constexpr int kAdbcVersion = 1000000;
