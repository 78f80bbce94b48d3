// show FILE and convert IN OUT.lkx: the open dispatcher and Save from a shell.
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "cli/commands.h"
#include "core/bounded_read.h"
#include "core/image.h"
#include "files/open_path.h"
#include "files/project_file.h"
#include "files/read_support.h"

namespace lk::cli {
namespace {

// The document text uses CR LF between lines; a shell wants LF.
std::string WithLineFeeds(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    out += text[i];
  }
  return out;
}

// Opens file on the selected chip; kExitOk when it loaded cleanly, kExitFailed when the
// reserved-word check wiped it, kExitUsage when it could not be opened.
int OpenForCommand(CliContext& ctx, const std::string& file, OpenResult& result) {
  if (ctx.RefuseChipOption()) return kExitUsage;
  Project& project = ctx.CurrentProject();
  if (!project.Chip.Loaded()) {
    ctx.Ui().Message(Icon::Critical, "No chip model could be loaded.", kAppTitle);
    return kExitUsage;
  }
  result = OpenPath(ctx.Ui(), ctx.ProgramHome(), project, file);
  if (!result.Opened) {
    // A missing file has said so; of one that is there the message box says only "Open
    // File Error!", so the shell is told which file and why.
    std::error_code ec;
    if (std::filesystem::symlink_status(file, ec).type() != std::filesystem::file_type::not_found) {
      std::string bytes;
      const ReadOutcome read = ReadRegularFile(file, files::kMaxTextFileBytes, bytes);
      ctx.Ui().Error(file + ": " +
                     (read.Ok() ? "not a program image or project of a kind this program reads"
                                : read.reason));
    }
    return kExitUsage;
  }
  return result.ReservedWiped ? kExitFailed : kExitOk;
}

int RunShow(CliContext& ctx, const std::string& file) {
  OpenResult result;
  const int status = OpenForCommand(ctx, file, result);
  if (status == kExitUsage) return status;
  const ChipParams& chip = ctx.CurrentProject().Chip;
  std::cout << "Model:" << chip.Name << "\n"
            << result.ChecksumText << "\n"
            << "Config:" << ConfigWordsText(chip) << "\n"
            << WithLineFeeds(HexText(chip)) << "\n";
  std::cout.flush();
  return status;
}

int RunConvert(CliContext& ctx, const std::string& in, const std::string& out) {
  OpenResult opened;
  const int status = OpenForCommand(ctx, in, opened);
  // A wiped image is not what IN holds: nothing is written.
  if (status != kExitOk) return status;
  const SaveResult saved = SaveProject(ctx.Ui(), ctx.ProgramHome(), ctx.CurrentProject(), out);
  if (!saved.Saved) return kExitUsage;
  // The written file did not reopen (a program area that is not whole lines of eight).
  return saved.Reopened.Opened ? kExitOk : kExitFailed;
}

}  // namespace

void AddFileCommands(CLI::App& app, CliContext*& context, int& exitCode) {
  auto showFile = std::make_shared<std::string>();
  CLI::App* show = app.add_subcommand("show", "open FILE as the Open command does and print it");
  show->add_option("FILE", *showFile, "image file (.hex .bin .qvm .sn8 .bct .ftc .lkx)")
      ->required();
  show->callback([&context, &exitCode, showFile] { exitCode = RunShow(*context, *showFile); });

  auto in = std::make_shared<std::string>();
  auto out = std::make_shared<std::string>();
  CLI::App* convert = app.add_subcommand("convert", "open IN and save it as the project OUT.lkx");
  convert->add_option("IN", *in, "image file")->required();
  convert->add_option("OUT", *out, "project file (\".lkx\" is added when missing)")
      ->required()
      // Save treats an empty name as a cancelled dialog and writes nothing; on a command
      // line it can only be a mistake.
      ->check(CLI::Validator(
          [](std::string& name) { return name.empty() ? "an empty name names no file" : ""; },
          "FILE"));
  convert->callback([&context, &exitCode, in, out] { exitCode = RunConvert(*context, *in, *out); });
}

}  // namespace lk::cli
