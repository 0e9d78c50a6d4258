#include "host/arrow/DatabaseAddress.h"

#include <gtest/gtest.h>

#include <string>

#include "host/session/HostIOError.h"

namespace MCHost {
namespace {

TEST(DatabaseAddress, SaysPlaceTableAndSchema) {
  struct Case {
    const char* fText;
    const char* fKind;
    const char* fPlace;
    const char* fTable;
    const char* fSchema;
  };
  const Case cases[] = {
      {"sqlite:a b.db", "SQLite", "a b.db", "", ""},
      {"sqlite:/x/y.db?table=odd%26%3D%20na%me", "SQLite", "/x/y.db", "odd&= na%me", ""},
      {"duckdb:x?schema=s&table=t", "DuckDB", "x", "t", "s"},
      {"postgresql://u:p@h/d?host=%2Ftmp&table=t&sslmode=off", "PostgreSQL",
       "postgresql://u:p@h/d?host=%2Ftmp&sslmode=off", "t", ""},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.fText);
    ASSERT_TRUE(IsDatabaseAddress(one.fText));
    const DatabaseAddress address = ReadDatabaseAddress(one.fText);
    EXPECT_STREQ(address.fpKind->fName, one.fKind);
    EXPECT_EQ(address.fPlace, one.fPlace);
    EXPECT_EQ(address.fTable, one.fTable);
    EXPECT_EQ(address.fSchema, one.fSchema);
  }
  EXPECT_FALSE(IsDatabaseAddress("data.csv"));
  EXPECT_THROW(ReadDatabaseAddress("sqlite:x?column=c"), HostIOError);
}

TEST(DatabaseAddress, NoPasswordIsShown) {
  const auto shown = [](const char* text) { return WithoutPassword(text); };
  EXPECT_EQ(shown("postgresql://u:p:q@h:5432/d?table=t"), "postgresql://u@h:5432/d?table=t");
  EXPECT_EQ(shown("postgresql://u:a@b@h/d"), "postgresql://u@h/d");
  EXPECT_EQ(shown("postgresql://h:5432/d?table=a@b"), "postgresql://h:5432/d?table=a@b");
  EXPECT_EQ(shown("postgresql:///d?user=u&password=p&table=t"),
            "postgresql:///d?user=u&password=...&table=t");
  EXPECT_EQ(shown("a:b@c.csv"), "a:b@c.csv");
}

TEST(DatabaseAddress, NamesAndTextsAreTakenLiterally) {
  EXPECT_EQ(QuotedName("a \"b\"; drop"), "\"a \"\"b\"\"; drop\"");
  EXPECT_EQ(QuotedText("it's"), "'it''s'");
}

}  // namespace
}  // namespace MCHost
