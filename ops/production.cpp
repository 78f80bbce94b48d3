#include "ops/production.h"

#include <filesystem>
#include <nlohmann/json.hpp>

#include "core/image.h"
#include "core/quiet_host.h"
#include "prod/chip_records.h"
#include "prod/sha256.h"
#include "prod/station.h"
#include "rolling/roll_code.h"

namespace lk::ops {

std::string SeriesName(const Project& project, const std::string& option) {
  if (!option.empty()) return option;
  if (project.ProjectPath.empty()) return "";
  return std::filesystem::path(project.ProjectPath).stem().string();
}

std::string WriterVersionText(std::uint32_t version) {
  return std::to_string(version & 0xFF) + "." + std::to_string((version >> 8) & 0xFF);
}

void ProductionRun::SetWriterVersion(std::uint32_t version) {
  version_ = WriterVersionText(version);
}

int ExitStatusFor(Outcome outcome) {
  switch (outcome) {
    case Outcome::Passed: return 0;
    case Outcome::Failed: return 1;
    case Outcome::Refused: return 2;
    case Outcome::NoWriter: return 3;
  }
  return 1;
}

ProductionRun::ProductionRun(prod::Database& db, const Project& project, const Writer& writer,
                             std::string seriesOption)
    : db_(db), project_(project), writer_(writer), series_(SeriesName(project, seriesOption)) {}

void ProductionRun::Refuse(Host& host, const std::string& text) const {
  host.Message(Icon::Critical, text + "\nThe chip was not programmed.", kAppTitle);
}

bool ProductionRun::Ready(Host& host) {
  // The records' chain must take this command's record: a database that refuses a read
  // now will not take a write afterwards either.
  if (auto head = db_.Query("SELECT count(*) FROM chain_head"); !head) {
    Refuse(host, head.ErrorText());
    return false;
  }
  if (!project_.RollingEnabled) return true;
  // The series must know this project's layout before a packet goes out.
  QuietHost quiet;
  const RollSettings settings = ReadRollSettings(quiet, RollSettingsPath(project_.ProjectPath));
  if (!settings.Enabled) return true;
  if (series_.empty()) {
    Refuse(host, db_.Error("the rolling code needs a series: open a project or give --series"));
    return false;
  }
  if (settings.Counts.size() != 4) {
    Refuse(host, db_.Error("it keeps four-byte rolling codes only; the project's code has " +
                           std::to_string(settings.Counts.size()) + " bytes"));
    return false;
  }
  if (auto used = prod::SerialLedger(db_).UseSeries(series_, prod::LayoutOf(settings)); !used) {
    Refuse(host, used.ErrorText());
    return false;
  }
  return true;
}

bool ProductionRun::ReserveSerial(Host& host, RollSettings& settings) {
  prod::SerialLedger ledger(db_);
  if (auto used = ledger.UseSeries(series_, prod::LayoutOf(settings)); !used) {
    Refuse(host, used.ErrorText());
    return false;
  }
  auto reserved = ledger.Reserve(series_, settings.Counts, settings.Mode2262);
  if (!reserved) {
    Refuse(host, reserved.ErrorText());
    return false;
  }
  for (const auto& code : reserved->Voided) {
    // The run that held it died before it could say how its chip ended.
    host.Log("Void Rolling Code:" + RollCodeText(code));
    voided_.push_back(code);
  }
  if (reserved->MovedFrom) {
    host.Message(Icon::Information,
                 "Rolling Code " + RollCodeText(*reserved->MovedFrom) + " was given before (series \"" +
                     series_ + "\"): this chip gets " + RollCodeText(reserved->Code) + ".",
                 kAppTitle);
  }
  settings.Counts = reserved->Code;
  open_ = std::move(*reserved);
  return true;
}

bool ProductionRun::CommitSerial(Host& host) {
  if (!open_) return true;
  auto done = prod::SerialLedger(db_).Commit(open_->Id);
  if (!done) {
    // The code stays reserved: the next run voids it, so it is never given again.
    host.Message(Icon::Critical, done.ErrorText() + "\nThe chip's serial was not committed.",
                 kAppTitle);
    open_.reset();
    return false;
  }
  open_.reset();
  return true;
}

void ProductionRun::ReleaseSerial(Host& host) {
  if (!open_) return;
  if (auto done = prod::SerialLedger(db_).Release(open_->Id); !done) {
    host.Diagnostic(done.ErrorText());  // still reserved: voided by the next run instead
  }
  open_.reset();
}

std::string ProductionRun::RecordJson(const std::string& command,
                                      const CommandResult& result) const {
  using nlohmann::json;
  const ChipParams& chip = project_.Chip;
  json config = json::array();
  const auto configWords = static_cast<std::size_t>(std::max<int>(chip.ConfigLength, 0));
  for (std::size_t i = 0; i < chip.ConfigWords.size() && i < configWords; ++i) {
    config.push_back(chip.ConfigWords[i]);
  }
  json voided = json::array();
  for (const auto& code : voided_) voided.push_back(RollCodeText(code));
  json steps = json::array();
  for (const StepRecord& s : result.Steps) {
    steps.push_back({{"name", s.Name},
                     {"result", s.Passed ? "ok" : "fail"},
                     {"fault", s.Fault.empty() ? json() : json(s.Fault)},
                     {"ms", s.Ms}});
  }
  auto text = [](const std::string& s) { return s.empty() ? json() : json(s); };
  const char* verdict = "failed";
  switch (result.Verdict) {
    case Outcome::Passed: verdict = "passed"; break;
    case Outcome::Failed: verdict = "failed"; break;
    case Outcome::NoWriter: verdict = "no writer"; break;
    case Outcome::Refused: verdict = "refused"; break;
  }
  const json record = {
      {"utc", prod::UtcNow()},
      {"station", prod::StationName()},
      {"command", command},
      {"writer",
       {{"path", text(writer_.BusName())},
        {"version", text(result.WriterVersion.empty() ? version_ : result.WriterVersion)},
        {"id", text(result.WriterId)}}},
      {"model", chip.Name},
      {"file", text(project_.ProjectPath)},
      {"series", text(series_)},
      {"program_sha256",
       result.ProgramWords.empty() ? json() : json(prod::WordsSha256Hex(result.ProgramWords))},
      {"checksum", ChecksumText(ProgramChecksum(chip))},
      {"config", config},
      {"serial",
       {{"used", text(result.RollingCode)}, {"next", text(result.NextRollingCode)}, {"voided", voided}}},
      {"steps", steps},
      {"result", verdict},
      {"failure_line", text(result.FailureLine)},
      {"exit", ExitStatusFor(result.Verdict)},
  };
  return record.dump(-1, ' ', false, json::error_handler_t::replace);
}

void ProductionRun::Record(Host& host, const std::string& command, const CommandResult& result) {
  auto appended = prod::ChipRecords(db_).Append(RecordJson(command, result));
  recorded_ = appended.Ok();
  if (!appended) host.Message(Icon::Critical, appended.ErrorText(), kAppTitle);
  voided_.clear();
}

}  // namespace lk::ops
