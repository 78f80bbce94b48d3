// One throwaway PostgreSQL server per test program (tests/support/pg-throwaway.sh), and
// a fresh database on it per test. Where the server binaries are missing, Url() is empty
// and the reason is in Why().
#pragma once

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "tests/support/temp_dir.h"

namespace lk::test {

class PgServer {
 public:
  static PgServer& Shared() {
    static PgServer server;
    return server;
  }
  const std::string& Url() const { return url_; }
  const std::string& Why() const { return why_; }

  // A new, empty database on the server; its URL.
  std::string FreshDatabase() {
    const std::string name = "t" + std::to_string(++databases_);
    Run("psql -q -X '" + url_ + "' -c 'CREATE DATABASE " + name + "' >/dev/null 2>&1");
    const auto q = url_.find('?');
    return url_.substr(0, url_.rfind('/', q)) + "/" + name + url_.substr(q);
  }

  ~PgServer() {
    if (!url_.empty()) Run("bash " + Script() + " stop '" + dir_->Path().string() + "/pg'");
  }

 private:
  PgServer() : dir_(std::make_unique<TempDir>()) {
    ::chmod(dir_->Path().c_str(), 0755);  // the server runs as another user when we are root
    const std::string cmd =
        "bash " + Script() + " start '" + dir_->Path().string() + "/pg' 2>" + dir_->Path().string() + "/why";
    std::string out;
    if (FILE* p = ::popen(cmd.c_str(), "r")) {
      char buf[512];
      while (std::fgets(buf, sizeof buf, p)) out += buf;
      const int status = ::pclose(p);
      if (status == 0 && !out.empty()) {
        url_ = out.substr(0, out.find('\n'));
        return;
      }
    }
    why_ = dir_->Read("why");
    if (why_.empty()) why_ = "the throwaway PostgreSQL server did not start";
    while (!why_.empty() && why_.back() == '\n') why_.pop_back();
  }
  static std::string Script() { return std::string(LK_SOURCE_DIR) + "/tests/support/pg-throwaway.sh"; }
  static void Run(const std::string& cmd) { (void)std::system(cmd.c_str()); }

  std::unique_ptr<TempDir> dir_;
  std::string url_;
  std::string why_;
  int databases_ = 0;
};

}  // namespace lk::test
