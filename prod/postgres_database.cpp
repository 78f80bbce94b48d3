// The production database on a PostgreSQL server that a line of stations shares.
// Writers of one kind are serialised by a transaction-scoped advisory lock; every
// statement gives up after the lock timeout instead of waiting for ever.
#include <libpq-fe.h>

#include "prod/database.h"

namespace lk::prod {
namespace {

// "?" placeholders as PostgreSQL's $1, $2, ... (our statements hold no "?" elsewhere).
std::string Numbered(const std::string& sql) {
  std::string out;
  int n = 0;
  for (const char c : sql) {
    if (c == '?') {
      out += "$" + std::to_string(++n);
    } else {
      out += c;
    }
  }
  return out;
}

class PostgresDatabase final : public Database {
 public:
  PostgresDatabase(const std::string& url, PGconn* conn) : Database(DisplayUrl(url)), conn_(conn) {}
  ~PostgresDatabase() override { PQfinish(conn_); }

  Backend Kind() const override { return Backend::Postgres; }

  Result<std::vector<Row>> Query(const std::string& sql,
                                 const std::vector<std::string>& params) override {
    std::vector<const char*> values;
    values.reserve(params.size());
    for (const std::string& p : params) values.push_back(p.c_str());
    PGresult* res = PQexecParams(conn_, Numbered(sql).c_str(), static_cast<int>(values.size()),
                                 nullptr, values.data(), nullptr, nullptr, 0);
    const ExecStatusType status = PQresultStatus(res);
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK) {
      std::string why = PQresultErrorMessage(res);
      if (why.empty()) why = PQerrorMessage(conn_);
      while (!why.empty() && (why.back() == '\n' || why.back() == ' ')) why.pop_back();
      PQclear(res);
      return Result<std::vector<Row>>::Error(Error(why));
    }
    std::vector<Row> rows;
    const int n = PQntuples(res);
    const int columns = PQnfields(res);
    rows.reserve(static_cast<std::size_t>(n));
    for (int r = 0; r < n; ++r) {
      Row row;
      for (int c = 0; c < columns; ++c) row.emplace_back(PQgetvalue(res, r, c));
      rows.push_back(std::move(row));
    }
    PQclear(res);
    return rows;
  }

 protected:
  Status Begin(std::int64_t lock) override {
    if (auto begun = Exec("BEGIN"); !begun) return begun;
    return Exec("SELECT pg_advisory_xact_lock(" + std::to_string(lock) + ")");
  }
  Status Commit() override { return Exec("COMMIT"); }
  void Rollback() override {
    if (PQtransactionStatus(conn_) != PQTRANS_IDLE) (void)Exec("ROLLBACK");
  }

 private:
  PGconn* conn_;
};

}  // namespace

Result<std::unique_ptr<Database>> OpenPostgres(const std::string& url, const OpenOptions& options) {
  // A server that does not answer must not hang the station: connect_timeout in seconds.
  const long seconds = std::max<long>(1, static_cast<long>(options.LockTimeout.count() / 1000));
  const char* keys[] = {"dbname", "connect_timeout", nullptr};
  const std::string timeout = std::to_string(seconds);
  const char* values[] = {url.c_str(), timeout.c_str(), nullptr};
  PGconn* conn = PQconnectdbParams(keys, values, 1);
  if (conn == nullptr || PQstatus(conn) != CONNECTION_OK) {
    std::string why = conn != nullptr ? PQerrorMessage(conn) : "out of memory";
    while (!why.empty() && (why.back() == '\n' || why.back() == ' ')) why.pop_back();
    PQfinish(conn);
    return Result<std::unique_ptr<Database>>::Error("production database " + DisplayUrl(url) +
                                                    ": " + why);
  }
  auto db = std::unique_ptr<Database>(new PostgresDatabase(url, conn));
  // Lock waits and statements end after the timeout; notices stay off the terminal.
  const std::string ms = std::to_string(options.LockTimeout.count());
  for (const std::string& set : {"SET lock_timeout = " + ms, "SET statement_timeout = " + ms,
                                 std::string("SET client_min_messages = warning")}) {
    if (auto done = db->Exec(set); !done) {
      return Result<std::unique_ptr<Database>>::Error(done.ErrorText());
    }
  }
  return db;
}

}  // namespace lk::prod
