// The production tests run every case on both databases: a SQLite file, and a fresh
// database on a throwaway PostgreSQL server (skipped, with the reason, when the server
// binaries are missing).
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "prod/database.h"
#include "tests/support/pg_server.h"
#include "tests/support/temp_dir.h"

namespace lk::test {

enum class Db { Sqlite, Postgres };

inline std::string DbName(const ::testing::TestParamInfo<Db>& info) {
  return info.param == Db::Sqlite ? "Sqlite" : "Postgres";
}

class ProdTest : public ::testing::TestWithParam<Db> {
 protected:
  void SetUp() override {
    if (GetParam() == Db::Postgres) {
      PgServer& pg = PgServer::Shared();
      if (pg.Url().empty()) GTEST_SKIP() << "PostgreSQL tests skipped: " << pg.Why();
      url_ = pg.FreshDatabase();
    } else {
      url_ = "sqlite:" + (dir_ / "production.sqlite").string();
    }
    db_ = Open();
  }
  // Another connection to the same database, as another process or station has.
  std::unique_ptr<prod::Database> Open() {
    auto db = prod::OpenDatabase(url_);
    EXPECT_TRUE(db.Ok()) << db.ErrorText();
    return db.Ok() ? std::move(*db) : nullptr;
  }

  TempDir dir_;
  std::string url_;
  std::unique_ptr<prod::Database> db_;
};

}  // namespace lk::test
