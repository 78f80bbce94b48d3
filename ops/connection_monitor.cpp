#include "ops/connection_monitor.h"

#include "files/open_path.h"
#include "link/exchange.h"
#include "link/identity_commands.h"
#include "ops/writer_id.h"
#include "ops/result_lines.h"

namespace lk::ops {

WriterFacts QueryWriter(Writer& writer, bool withIdentity) {
  WriterFacts facts;
  if (GetWriterVersion(writer) == Fault::None) facts.Version = writer.WriterVersion;
  if (withIdentity) {
    if (const auto answer = GetWriterId(writer)) {
      if (const auto id = ParseWriterId(*answer)) {
        facts.Id = id->Number;
        facts.Dedicated = id->Dedicated;
      }
    }
  }
  return facts;
}

std::string ConnectedLine(std::uint32_t version) {
  return "烧录器已经连接！版本号： v" + std::to_string(version & 0xFF) + "." +
         std::to_string((version >> 8) & 0xFF);
}

std::string WriterIdLine(std::uint32_t id) { return "烧录器ID：" + PaddedWriterId(id, 6); }

TickResult MonitorTick(Host& host, Writer& writer, MonitorState& state, WatchedFile& file) {
  TickResult result;
  if (!writer.FindWriter()) {
    host.Status(4, kNoDeviceConnected);
    if (state.WriterConnected) {
      host.ClearLog();
      host.Log("烧录器断开连接！");
    }
    state.WriterConnected = false;
  } else {
    host.Status(4, "Device Connected");
    if (!state.WriterConnected && writer.OpenWriterHandles()) {
      const WriterFacts facts = QueryWriter(writer, true);
      result.Arrived = facts;
      if (facts.Version) host.Log(ConnectedLine(*facts.Version));
      if (!facts.Id) {
        host.Message(Icon::Information, "读取错误！", kAppTitle);
        FinishOperation(writer, false);
        state.Polling = false;
      } else {
        host.Log(WriterIdLine(*facts.Id));
        if (facts.Dedicated) host.Log("QVM50F96B/98B专用烧录器！");
        FinishOperation(writer, true);
      }
      // Connected even after a bad identity answer: polling is off then, and a command
      // that restarts it does not announce the same writer again.
      state.WriterConnected = true;
    }
  }
  writer.CloseWriter();

  if (file.Path.empty()) {
    host.Status(3, "");
    return result;
  }
  const std::string now = FileModifiedText(file.Path);
  if (now != file.LastSeen) {
    file.LastSeen = now;
    result.Reload = host.Ask(file.Path +
                                 "\r\nThis file has been modified outside of the Writer\r\n"
                                 "Do you want to reload it?",
                             "File Changed");
  }
  return result;
}

}  // namespace lk::ops
