// The connection monitor: one tick of the main window's 1000 ms timer. It reports the
// writer's arrival (version and identity) and departure, and watches the open file for
// changes made by other programs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "core/host.h"
#include "link/writer.h"

namespace lk::ops {

struct MonitorState {
  // From the tick that first finds the writer until the tick that finds it gone.
  bool WriterConnected = false;
  // The timer itself: a bad identity answer switches it off for the rest of the run.
  bool Polling = true;
};

// The open file and the modification time last seen for it ("" when none is open).
struct WatchedFile {
  std::string Path;
  std::string LastSeen;
};

// What the writer says of itself when it is asked on its arrival.
struct WriterFacts {
  std::optional<std::uint32_t> Version;  // the version word, when the writer gave it
  std::optional<std::uint32_t> Id;       // the identity number, when the answer was good
  bool Dedicated = false;                // a QVM50F96B/98B-only writer
};

// Asks an open writer for its version (which also picks the protocol generation) and,
// when wanted, its identity. Nothing is shown.
WriterFacts QueryWriter(Writer& writer, bool withIdentity);

// "烧录器已经连接！版本号： v" + low byte + "." + high byte (low byte first, as the writer
// has always been shown).
std::string ConnectedLine(std::uint32_t version);
// "烧录器ID：" + the number as six digits (the last six kept).
std::string WriterIdLine(std::uint32_t id);

struct TickResult {
  // What the writer said of itself on a new connection (nothing on other ticks).
  std::optional<WriterFacts> Arrived;
  // The user answered OK to "File Changed": the caller reloads the file through the
  // open dispatcher.
  bool Reload = false;
};

// One tick: status panel 4, the message-list lines of a connection or disconnection,
// the link released again, then the file watch (panel 3 emptied when no file is open).
TickResult MonitorTick(Host& host, Writer& writer, MonitorState& state, WatchedFile& file);

}  // namespace lk::ops
