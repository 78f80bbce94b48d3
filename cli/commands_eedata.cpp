// eedata-read and eedata-write: the EEDATA window's two operations from a shell. Their
// reports (the EEDATA window's status lines) are printed like log lines.
#include <algorithm>
#include <memory>
#include <string>

#include "cli/chip_run.h"
#include "cli/commands.h"
#include "ops/eedata_operations.h"
#include "ops/eedata_window.h"
#include "ops/open_document.h"

namespace lk::cli {
namespace {

bool EndsWithHex(const std::string& path) {
  if (path.size() < 4) return false;
  std::string ending = path.substr(path.size() - 4);
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ending == ".hex";
}

// FILE for eedata-write: an EEDATA HEX file read as the EEDATA window reads it, or a
// project (any other file) that carries EEDATA.
int LoadEedataSource(CliContext& ctx, Project& project, const std::string& file) {
  CliHost& host = ctx.Ui();
  if (EndsWithHex(file)) {
    return ops::LoadEedataHex(host, project.Chip, file) == ops::EedataLoad::Loaded ? kExitOk
                                                                                   : kExitUsage;
  }
  const ops::OpenedDocument doc = ops::OpenDocument(host, ctx.ProgramHome(), project, file);
  if (const std::string why = ops::RefusalToSend(doc.Open, file); !why.empty()) {
    host.Error(why);
    return kExitUsage;
  }
  // A chip without EEDATA is the operation's to report; a project that does not carry
  // any for a chip that has it is a file error.
  if (project.Chip.EeSize >= 1 && project.Chip.EeFlag != kEeFlagPresent) {
    host.Error(file + ": the project carries no EEDATA");
    return kExitUsage;
  }
  return kExitOk;
}

}  // namespace

void AddEedataCommands(CLI::App& app, CliContext*& context, int& exitCode) {
  auto output = std::make_shared<std::string>();
  CLI::App* read = app.add_subcommand("eedata-read", "read the chip's EEDATA");
  read->add_option("-o,--output", *output,
                   "save the project with the EEDATA read as OUT.lkx (it then carries EEDATA)");
  read->callback([&context, &exitCode, output] {
    ChipRunRequest request("eedata-read");
    request.Output = *output;
    exitCode = RunChipCommand(*context, request, [out = *output](ops::Station& st) {
      const auto result =
          ops::ReadEedataFromChip(st, [&st](const std::string& line) { st.host.Log(line); });
      // A project saved from this read is meant to carry what was read.
      if (result.Verdict == ops::Outcome::Passed && !out.empty()) {
        st.project.Chip.EeFlag = kEeFlagPresent;
      }
      return result;
    });
  });

  auto file = std::make_shared<std::string>();
  CLI::App* write = app.add_subcommand("eedata-write", "write EEDATA into the chip and verify it");
  write->add_option("FILE", *file, "EEDATA HEX file, or a project carrying EEDATA")->required();
  write->callback([&context, &exitCode, file] {
    ChipRunRequest request("eedata-write", *file);
    exitCode = RunChipCommand(
        *context, request,
        [](ops::Station& st) {
          return ops::WriteEedataToChip(st, [&st](const std::string& line) { st.host.Log(line); });
        },
        LoadEedataSource);
  });
}

}  // namespace lk::cli
