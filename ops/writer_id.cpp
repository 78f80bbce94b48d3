#include "ops/writer_id.h"

#include "core/profile.h"
#include "link/exchange.h"
#include "link/identity_commands.h"
#include "link/protocol.h"
#include "ops/frame.h"

namespace lk::ops {
namespace {

constexpr const char* kNotConnected = "烧录器未连接！";

void Inform(Host& host, const std::string& text) {
  host.Message(Icon::Information, text, kAppTitle);
}

// A writer this user may not open has had its own message, which says more.
void NotConnected(Station& st) {
  if (!st.writer.WriterDenied()) Inform(st.host, kNotConnected);
}

}  // namespace

std::string PaddedWriterId(std::uint64_t number, int width) {
  const std::string text = std::string(static_cast<std::size_t>(width), '0') + std::to_string(number);
  return text.substr(text.size() - static_cast<std::size_t>(width));
}

std::string StoredWriterIdText(Host& host, const Home& home) {
  const std::string stored = GetValue(host, home.DataDat(), "Setting", "ID");
  // Only the leading digits count, as the number field has always read them.
  std::uint64_t number = 0;
  for (char c : stored) {
    if (c < '0' || c > '9' || number > 0xFFFFFFFFull) break;
    number = number * 10 + static_cast<std::uint64_t>(c - '0');
  }
  return PaddedWriterId(number, 6);
}

bool AcceptWriterIdKey(char key) { return key == '\b' || (key >= '0' && key <= '9'); }

std::optional<std::uint32_t> ParseWriterIdText(const std::string& text) {
  if (text.empty() || text.size() > 20) return std::nullopt;
  std::uint64_t number = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    number = number * 10 + static_cast<std::uint64_t>(c - '0');
    if (number > 0xFFFFFFFFull) return std::nullopt;
  }
  return static_cast<std::uint32_t>(number);
}

static WriterIdSet SetWriterIdentifierOnce(Station& st, std::uint32_t id, bool increment) {
  Writer& w = st.writer;
  WriterIdSet result;
  if (!w.FindWriter() || !w.OpenWriterHandles()) {
    NotConnected(st);
    result.Verdict = Outcome::NoWriter;
    return result;
  }
  st.ui.PauseMonitor();
  const std::array<std::uint8_t, 4> bytes = {
      static_cast<std::uint8_t>(id), static_cast<std::uint8_t>(id >> 8),
      static_cast<std::uint8_t>(id >> 16), static_cast<std::uint8_t>(id >> 24)};
  bool same = SetWriterId(w, bytes) == Fault::None;
  if (same) {
    const auto answer = GetWriterId(w);
    same = answer && answer->size() >= 6 && (*answer)[1] == proto::kIdStatus;
    for (int i = 0; same && i < 4; ++i) same = (*answer)[2 + i] == bytes[i];
  }
  if (!same) {
    FinishOperation(w, false);
    Inform(st.host, "烧录器ID设置失败！");
    w.CloseWriter();
    st.ui.ResumeMonitor();
    return result;
  }
  Inform(st.host, "设置成功！\r\n烧录器ID为：" + std::to_string(id));
  if (increment) {
    const std::uint64_t next = std::uint64_t{id} + 1;
    result.NextText = PaddedWriterId(next, 8);
    WriteValue(st.host, st.home.DataDat(), "Setting", "ID", std::to_string(next));
  }
  FinishOperation(w, true);
  w.CloseWriter();
  st.ui.ResumeMonitor();
  result.Verdict = Outcome::Passed;
  return result;
}

static Outcome ReadWriterIdentifierOnce(Station& st, std::string& idText) {
  Writer& w = st.writer;
  if (!w.FindWriter()) {
    NotConnected(st);
    return Outcome::NoWriter;
  }
  st.ui.PauseMonitor();
  if (!w.OpenWriterHandles()) {
    NotConnected(st);
    st.ui.ResumeMonitor();
    return Outcome::NoWriter;
  }
  const auto answer = GetWriterId(w);
  Outcome outcome = Outcome::Failed;
  if (!answer || answer->size() < 4 || (*answer)[1] != proto::kIdStatus) {
    Inform(st.host, "读取错误！");
    FinishOperation(w, false);
  } else {
    // Only the two lowest bytes are shown, whatever was set.
    const unsigned number = (*answer)[2] + 256u * (*answer)[3];
    idText = PaddedWriterId(number, 6);
    Inform(st.host, "读取完成！\r\n烧录器ID：" + idText);
    FinishOperation(w, true);
    w.WaitMs(50);
    outcome = Outcome::Passed;
  }
  w.CloseWriter();
  st.ui.ResumeMonitor();
  return outcome;
}

// With a production database the two writer-ID functions are refused like a chip
// command when their record cannot be written, and leave one.
WriterIdSet SetWriterIdentifier(Station& st, std::uint32_t id, bool increment) {
  CommandResult record;
  WriterIdSet result;
  if (increment && id == 0xFFFFFFFFu) {
    // The next writer's number would not fit the identifier: refused before any packet.
    Inform(st.host, "烧录器ID " + std::to_string(id) + " 已是最大值，不能再自动加 1！");
    result.Verdict = Outcome::Refused;
    return result;
  }
  if (st.production != nullptr && !st.production->Ready(st.host)) {
    result.Verdict = record.Verdict = Outcome::Refused;
  } else {
    result = SetWriterIdentifierOnce(st, id, increment);
    record.Verdict = result.Verdict;
    if (result.Verdict == Outcome::Passed) record.WriterId = PaddedWriterId(id, 8);
  }
  EndStep(record, "Writer ID", record.Verdict == Outcome::Passed);
  if (st.production != nullptr) st.production->Record(st.host, "Writer ID Set", record);
  return result;
}

Outcome ReadWriterIdentifier(Station& st) {
  CommandResult record;
  if (st.production != nullptr && !st.production->Ready(st.host)) {
    record.Verdict = Outcome::Refused;
  } else {
    record.Verdict = ReadWriterIdentifierOnce(st, record.WriterId);
  }
  EndStep(record, "Writer ID", record.Verdict == Outcome::Passed);
  if (st.production != nullptr) st.production->Record(st.host, "Writer ID Read", record);
  return record.Verdict;
}

}  // namespace lk::ops
