// probe: the connection monitor's view of the writer from a shell.
#include <cstdio>
#include <iostream>

#include "cli/commands.h"
#include "cli/writer_device.h"
#include "link/protocol.h"

namespace lk::cli {
namespace {

int Probe(CliContext& context) {
  std::unique_ptr<Writer> writer = MakeCliWriter(context);
  if (!writer) return kExitUsage;
  CliHost& host = context.Ui();
  if (!writer->FindWriter() || !writer->OpenWriterHandles()) {
    std::cout << "No Device Connected" << std::endl;
    return kExitNoWriter;
  }
  int exitCode = kExitOk;
  if (writer->GetWriterVersion()) {
    const unsigned version = writer->WriterVersion;
    // Low byte first: the writer's own way of showing its version.
    host.Log("烧录器已经连接！版本号： v" + std::to_string(version & 0xFF) + "." +
             std::to_string((version >> 8) & 0xFF));
  } else {
    exitCode = kExitFailed;
  }
  // The identity answer: length, status 0xA2, four ID bytes, type, marker, checksum.
  const std::vector<std::uint8_t> id = writer->GetWriterId();
  if (id.size() < 9 || id[1] != proto::kIdStatus) {
    host.Message(Icon::Information, "读取错误！", kAppTitle);
    writer->CloseWriter();
    return kExitFailed;
  }
  const std::uint32_t number = id[2] | (id[3] << 8) | (id[4] << 16) |
                               (static_cast<std::uint32_t>(id[5]) << 24);
  char digits[8];
  std::snprintf(digits, sizeof digits, "%06u", number % 1000000u);
  host.Log(std::string("烧录器ID：") + digits);
  if (id[6] < proto::kFirstGeneralWriterType || id[7] != proto::kGeneralWriterMarker) {
    host.Log("QVM50F96B/98B专用烧录器！");
  }
  writer->CloseWriter();
  return exitCode;
}

}  // namespace

void AddLinkCommands(CLI::App& app, CliContext*& context, int& exitCode) {
  CLI::App* probe =
      app.add_subcommand("probe", "find the writer, read its version and identity");
  probe->callback([&] { exitCode = Probe(*context); });
}

}  // namespace lk::cli
