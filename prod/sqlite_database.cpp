// The production database in one SQLite file. Writers are serialised by SQLite's own
// file lock (BEGIN IMMEDIATE), waiting up to the lock timeout for another process.
#include <sqlite3.h>

#include "prod/database.h"

namespace lk::prod {
namespace {

class SqliteDatabase final : public Database {
 public:
  SqliteDatabase(std::string path, sqlite3* db) : Database("sqlite:" + path), db_(db) {}
  ~SqliteDatabase() override { sqlite3_close_v2(db_); }

  Backend Kind() const override { return Backend::Sqlite; }

  Result<std::vector<Row>> Query(const std::string& sql,
                                 const std::vector<std::string>& params) override {
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(db_, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
      return Result<std::vector<Row>>::Error(Why());
    }
    for (std::size_t i = 0; i < params.size(); ++i) {
      sqlite3_bind_text(stmt, static_cast<int>(i + 1), params[i].c_str(),
                        static_cast<int>(params[i].size()), SQLITE_TRANSIENT);
    }
    std::vector<Row> rows;
    int rc = SQLITE_OK;
    while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
      Row row;
      const int columns = sqlite3_column_count(stmt);
      for (int c = 0; c < columns; ++c) {
        const auto* text = sqlite3_column_text(stmt, c);
        row.emplace_back(text != nullptr ? reinterpret_cast<const char*>(text) : "");
      }
      rows.push_back(std::move(row));
    }
    sqlite3_finalize(stmt);
    if (rc != SQLITE_DONE) return Result<std::vector<Row>>::Error(Why(rc));
    return rows;
  }

 protected:
  Status Begin(std::int64_t) override { return Exec("BEGIN IMMEDIATE"); }
  Status Commit() override { return Exec("COMMIT"); }
  void Rollback() override {
    if (sqlite3_get_autocommit(db_) == 0) (void)Exec("ROLLBACK");
  }

 private:
  std::string Why(int rc = 0) const {
    const int code = rc != 0 ? rc : sqlite3_errcode(db_);
    if ((code & 0xFF) == SQLITE_BUSY || (code & 0xFF) == SQLITE_LOCKED) {
      return Error("locked by another program beyond the timeout (" +
                   std::string(sqlite3_errmsg(db_)) + ")");
    }
    return Error(sqlite3_errmsg(db_));
  }

  sqlite3* db_;
};

}  // namespace

Result<std::unique_ptr<Database>> OpenSqlite(const std::string& path, const OpenOptions& options) {
  sqlite3* db = nullptr;
  const int rc = sqlite3_open_v2(path.c_str(), &db,
                                 SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
                                 nullptr);
  if (rc != SQLITE_OK) {
    const std::string why = db != nullptr ? sqlite3_errmsg(db) : sqlite3_errstr(rc);
    sqlite3_close_v2(db);
    return Result<std::unique_ptr<Database>>::Error("production database sqlite:" + path + ": " +
                                                    why);
  }
  sqlite3_busy_timeout(db, static_cast<int>(options.LockTimeout.count()));
  sqlite3_extended_result_codes(db, 1);
  return std::unique_ptr<Database>(new SqliteDatabase(path, db));
}

}  // namespace lk::prod
