// The production database from a shell: check the records' chain, export the records,
// and count passes and failures per series, day and writer.
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

#include "cli/commands.h"
#include "core/atomic_file.h"
#include "ops/production.h"
#include "prod/chip_records.h"
#include "prod/database.h"
#include "prod/serial_ledger.h"

namespace lk::cli {
namespace {

// The database of --db, or an error line and kExitUsage.
prod::Database* OpenOrSay(CliContext& ctx, int& exitCode) {
  std::string error;
  prod::Database* db = ctx.ProductionDatabase(error);
  if (db == nullptr) {
    ctx.Ui().Error(error.empty() ? "no production database (--db none)" : error);
    exitCode = kExitUsage;
  }
  return db;
}

int Verify(CliContext& ctx) {
  int status = kExitOk;
  prod::Database* db = OpenOrSay(ctx, status);
  if (db == nullptr) return status;
  auto check = prod::ChipRecords(*db).Verify();
  if (!check) {
    ctx.Ui().Error(check.ErrorText());
    return kExitUsage;
  }
  if (!check->Ok) {
    std::cout << "record " << check->FirstBadId << ": " << check->Why << "\n";
    std::cout << "chain broken: " << check->Records << " records verified before record "
              << check->FirstBadId << "\n";
    return kExitFailed;
  }
  std::cout << "chain verified: " << check->Records << " records\n";
  return kExitOk;
}

int Export(CliContext& ctx, bool csv, const std::string& output) {
  int status = kExitOk;
  prod::Database* db = OpenOrSay(ctx, status);
  if (db == nullptr) return status;
  std::ostringstream text;
  prod::ChipRecords records(*db);
  const prod::Status done = csv ? records.ExportCsv(text) : records.ExportJsonl(text);
  if (!done) {
    ctx.Ui().Error(done.ErrorText());
    return kExitUsage;
  }
  if (output.empty() || output == "-") {
    std::cout << text.str();
    return std::cout ? kExitOk : kExitUsage;
  }
  std::string why;
  if (!WriteFileAtomically(output, text.str(), why)) {
    ctx.Ui().Error(output + ": " + why);
    return kExitUsage;
  }
  return kExitOk;
}

int Stats(CliContext& ctx, const std::string& series) {
  int status = kExitOk;
  prod::Database* db = OpenOrSay(ctx, status);
  if (db == nullptr) return status;
  auto rows = prod::ChipRecords(*db).Stats(series, ops::kUncountedCommands);
  prod::SerialLedger ledger(*db);
  auto names = ledger.SeriesNames();
  if (!rows || !names) {
    ctx.Ui().Error(!rows ? rows.ErrorText() : names.ErrorText());
    return kExitUsage;
  }
  for (const prod::StatsRow& r : *rows) {
    std::cout << r.Group << " " << r.Key << " passed " << r.Passed << " failed " << r.Failed
              << " total " << r.Total << "\n";
  }
  // What the ledger holds: codes given (committed), given back (released), skipped
  // because a run died with them (void), and open now (reserved).
  for (const std::string& name : *names) {
    if (!series.empty() && name != series) continue;
    auto c = ledger.Counts(name);
    if (!c) {
      ctx.Ui().Error(c.ErrorText());
      return kExitUsage;
    }
    std::cout << "serials " << name << " committed " << c->Committed << " released "
              << c->Released << " void " << c->Void << " reserved " << c->Reserved << "\n";
  }
  return kExitOk;
}

}  // namespace

void AddProductionCommands(CLI::App& app, CliContext*& context, int& exitCode) {
  CLI::App* log = app.add_subcommand("log", "the production database's chip records");
  log->require_subcommand(1);
  log->add_subcommand("verify", "check the records' hash chain (exit 1 names the first bad record)")
      ->callback([&context, &exitCode] { exitCode = Verify(*context); });

  struct ExportArgs {
    bool csv = false;
    bool jsonl = false;
    std::string output;
  };
  auto args = std::make_shared<ExportArgs>();
  CLI::App* exp = log->add_subcommand("export", "every record, as CSV or JSON lines");
  auto* csv = exp->add_flag("--csv", args->csv, "CSV with a header line");
  auto* jsonl = exp->add_flag("--jsonl", args->jsonl, "one JSON object a line");
  csv->excludes(jsonl);
  exp->add_option("-o,--output", args->output, "write to FILE instead of standard output");
  exp->callback([&context, &exitCode, args] {
    if (!args->csv && !args->jsonl) {
      context->Ui().Error("log export needs --csv or --jsonl");
      exitCode = kExitUsage;
      return;
    }
    exitCode = Export(*context, args->csv, args->output);
  });

  auto series = std::make_shared<std::string>();
  CLI::App* stats = app.add_subcommand("stats", "passed, failed and total per series, day and writer");
  stats->add_option("--series", *series, "only this series");
  stats->callback([&context, &exitCode, series] { exitCode = Stats(*context, *series); });
}

}  // namespace lk::cli
