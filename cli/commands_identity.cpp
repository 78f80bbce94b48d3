// id-set and id-get: the writer-ID dialog from a shell. Its results are message boxes,
// so they come on stderr as "message:" lines; the exit status says how it went.
#include <memory>
#include <string>

#include "cli/chip_run.h"
#include "cli/commands.h"
#include "ops/writer_id.h"

namespace lk::cli {

void AddIdentityCommands(CLI::App& app, CliContext*& context, int& exitCode) {
  struct SetArgs {
    std::string number;
    bool increment = false;
  };
  auto args = std::make_shared<SetArgs>();
  CLI::App* set = app.add_subcommand("id-set", "set the writer's identifier");
  set->add_option("N", args->number, "the identifier, 0..4294967295")->required();
  set->add_flag("--increment", args->increment,
                "store N + 1 in dat/data.dat for the next writer after a successful set");
  set->callback([&context, &exitCode, args] {
    const auto id = ops::ParseWriterIdText(args->number);
    if (!id) {
      context->Ui().Error("\"" + args->number +
                          "\" is not a writer identifier (decimal digits, at most 4294967295)");
      exitCode = kExitUsage;
      return;
    }
    const bool increment = args->increment;
    exitCode = RunChipCommand(*context, ChipRunRequest("id-set"), [&](ops::Station& st) {
      ops::CommandResult result;
      result.Verdict = ops::SetWriterIdentifier(st, *id, increment).Verdict;
      return result;
    });
  });

  CLI::App* get = app.add_subcommand("id-get", "read the writer's identifier");
  get->callback([&context, &exitCode] {
    exitCode = RunChipCommand(*context, ChipRunRequest("id-get"), [](ops::Station& st) {
      ops::CommandResult result;
      result.Verdict = ops::ReadWriterIdentifier(st);
      return result;
    });
  });
}

}  // namespace lk::cli
