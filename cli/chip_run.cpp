#include "cli/chip_run.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <iostream>

#include "cli/json.h"
#include "cli/writer_device.h"
#include "files/project_file.h"
#include "ops/connection_monitor.h"
#include "ops/open_document.h"
#include "ops/production.h"
#include "prod/database.h"

namespace lk::cli {
namespace {

// A signal handler can only reach a flag of static duration: this is the one.
std::atomic<bool> g_stop{false};

extern "C" void OnInterrupt(int) {
  g_stop.store(true);
  std::signal(SIGINT, SIG_DFL);  // the second Ctrl-C ends the program
}

const char* ResultName(ops::Outcome outcome) {
  switch (outcome) {
    case ops::Outcome::Passed: return "passed";
    case ops::Outcome::Failed: return "failed";
    case ops::Outcome::NoWriter: return "no writer";
    case ops::Outcome::Refused: return "refused";
  }
  return "failed";
}

// A link fault that explains a failure better than the failure line alone.
bool WorthSaying(Fault fault) {
  switch (fault) {
    case Fault::Timeout:
    case Fault::BadFrame:
    case Fault::Refused:
    case Fault::Unplugged:
    case Fault::StillBusy:
    case Fault::Stopped:
    case Fault::NotOpen:
      return true;
    default:
      return false;
  }
}

std::string VersionText(std::uint32_t version) { return ops::WriterVersionText(version); }

struct JsonRecord {
  std::string Command, Model, File, Result;
  int ExitStatus = 0;
  std::optional<std::uint32_t> Version, Id;
  long DurationMs = 0;
  std::string RollingCode, NextRollingCode;
};

void PrintJson(const CliHost& host, const JsonRecord& r) {
  Json out;
  out["command"] = r.Command;
  out["model"] = r.Model;
  out["file"] = TextOrNull(r.File);
  out["log"] = host.LogLines();
  out["messages"] = host.Messages();
  out["errors"] = host.Errors();
  out["result"] = r.Result;
  out["exit"] = r.ExitStatus;
  out["writer"]["version"] = r.Version ? Json(VersionText(*r.Version)) : Json();
  out["writer"]["id"] = r.Id ? Json(*r.Id) : Json();
  out["duration_ms"] = r.DurationMs;
  out["rolling"]["used"] = TextOrNull(r.RollingCode);
  out["rolling"]["next"] = TextOrNull(r.NextRollingCode);
  std::cout << JsonLine(out) << std::endl;
}

}  // namespace

const std::atomic<bool>& StopRequested() { return g_stop; }

void InstallStopHandler() {
  g_stop.store(false);
  std::signal(SIGINT, OnInterrupt);
}

int ExitStatusOf(ops::Outcome outcome) {
  switch (outcome) {
    case ops::Outcome::Passed: return kExitOk;
    case ops::Outcome::Failed: return kExitFailed;
    case ops::Outcome::NoWriter: return kExitNoWriter;
    case ops::Outcome::Refused: return kExitUsage;
  }
  return kExitFailed;
}

int RunChipCommand(CliContext& ctx, const ChipRunRequest& request, const ChipCommand& command,
                   const FileLoader& loader) {
  const auto start = std::chrono::steady_clock::now();
  CliHost& host = ctx.Ui();
  host.SetJson(ctx.Options().json);
  JsonRecord record;
  record.Command = request.Command;
  record.File = request.File.value_or("");

  auto finish = [&](int status, const std::string& result) {
    host.Flush();
    record.ExitStatus = status;
    record.Result = result;
    record.DurationMs = static_cast<long>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                              std::chrono::steady_clock::now() - start)
                                              .count());
    if (host.Json()) PrintJson(host, record);
    return status;
  };
  auto refuse = [&](const std::string& why) {
    host.Error(why);
    return finish(kExitUsage, "error");
  };

  Project& project = ctx.CurrentProject();
  if (ctx.RefuseChipOption()) return finish(kExitUsage, "error");
  if (!project.Chip.Loaded()) return refuse("no chip model could be loaded");
  if (request.File) {
    if (loader) {
      if (const int status = loader(ctx, project, *request.File); status != kExitOk) {
        return finish(status, "error");
      }
    } else {
      const ops::OpenedDocument doc =
          ops::OpenDocument(host, ctx.ProgramHome(), project, *request.File);
      // Nothing the open dispatcher refused or wiped ever goes to the writer.
      if (const std::string why = ops::RefusalToSend(doc.Open, *request.File); !why.empty()) {
        return refuse(why);
      }
    }
  }
  record.Model = project.Chip.Name;

  // A chip never goes out with a serial or a record that cannot be written: the database
  // is opened (and checked) before the first packet.
  std::string dbError;
  prod::Database* db = ctx.ProductionDatabase(dbError);
  if (db == nullptr && !dbError.empty()) return refuse(dbError);

  std::unique_ptr<Writer> writer = MakeCliWriter(ctx, project.Chip.Name);
  if (!writer) return finish(kExitUsage, "error");
  InstallStopHandler();
  writer->SetStopFlag(&StopRequested());

  // The desktop program's connection monitor asks every writer it finds for its
  // version, which picks the protocol generation; a command line asks here.
  if (writer->FindWriter() && writer->OpenWriterHandles()) {
    record.Version = ops::QueryWriter(*writer, false).Version;
    writer->CloseWriter();
  }

  ops::NullFrameUi ui;
  ops::Station st{host, ui, ctx.ProgramHome(), project, *writer};
  std::optional<ops::ProductionRun> production;
  if (db != nullptr) {
    production.emplace(*db, project, *writer, ctx.Options().series);
    if (record.Version) production->SetWriterVersion(*record.Version);
    st.production = &*production;
  }
  const ops::CommandResult result = command(st);
  writer->SetStopFlag(nullptr);
  std::signal(SIGINT, SIG_DFL);
  // The record's writer ID is asked after the command, so that the command's packets
  // (and a --sim-fault counting them) are the same with and without --json.
  if (host.Json() && result.Verdict != ops::Outcome::NoWriter && writer->FindWriter() &&
      writer->OpenWriterHandles()) {
    record.Id = ops::QueryWriter(*writer, true).Id;
    writer->CloseWriter();
  }
  record.RollingCode = result.RollingCode;
  record.NextRollingCode = result.NextRollingCode;
  host.Flush();

  int status = ExitStatusOf(result.Verdict);
  if (result.Verdict == ops::Outcome::Failed && WorthSaying(result.Why)) {
    host.Error(writer->LastFaultText());
  }
  if (status == kExitOk && !request.Output.empty()) {
    const SaveResult saved = SaveProject(host, ctx.ProgramHome(), project, request.Output);
    if (!saved.Saved) status = kExitUsage;
  }
  return finish(status, ResultName(result.Verdict));
}

}  // namespace lk::cli
