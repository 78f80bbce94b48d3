#include "ops/eedata_window.h"

#include <algorithm>
#include <filesystem>

#include "core/bounded_read.h"
#include "core/numeric_text.h"
#include "core/text_lines.h"
#include "files/open_path.h"
#include "files/read_support.h"

namespace lk::ops {
namespace {

// Word addresses of the EEDATA in a HEX file: from 0x2100, and below 0x43F1 (the odd
// upper bound is the one the files have always been checked against).
constexpr std::uint32_t kEedataFirst = 0x2100;
constexpr std::uint32_t kEedataEnd = 0x43F1;

bool IsFile(const std::string& path) {
  std::error_code ec;
  return !path.empty() && std::filesystem::is_regular_file(path, ec);
}

// A field of hex digits as the window's number conversion reads it: the leading digits,
// nothing at all being 0.
std::uint32_t HexValue(std::string_view field) {
  std::uint32_t value = 0;
  for (char c : field) {
    int digit;
    if (c >= '0' && c <= '9') {
      digit = c - '0';
    } else if (c >= 'A' && c <= 'F') {
      digit = c - 'A' + 10;
    } else if (c >= 'a' && c <= 'f') {
      digit = c - 'a' + 10;
    } else {
      break;
    }
    value = (value << 4) | static_cast<std::uint32_t>(digit);
  }
  return value;
}

}  // namespace

EedataLoad LoadEedataHex(Host& host, ChipParams& chip, const std::string& path) {
  std::string text;
  std::error_code ec;
  if (path.empty() || std::filesystem::symlink_status(path, ec).type() ==
                          std::filesystem::file_type::not_found) {
    host.Message(Icon::Information, "未找到文件路径！", kAppTitle);
    return EedataLoad::NotFound;
  }
  // Something of that name that is no file to read (a FIFO, a folder, a link round in a
  // loop, too large, refused): say what it is rather than that nothing is there.
  ReadOutcome outcome = ReadRegularFile(path, files::kMaxTextFileBytes, text);
  if (!outcome.Ok()) {
    if (outcome.problem == ReadProblem::Missing) {
      outcome.problem = ReadProblem::Unreadable;
      outcome.reason = "the link leads nowhere or round in a loop";
    }
    host.FileUnreadable(CannotReadText(path, outcome));
    return EedataLoad::NotFound;
  }
  // Loaded into a copy, so that a refused file changes nothing.
  std::vector<std::uint8_t> bytes = chip.EeBytes;
  TextLines lines(text);
  for (std::string_view line; lines.Next(line);) {
    if (files::RecordType(line) != "00") continue;
    const std::uint32_t count = files::HalveRoundHalfEven(HexValue(files::Mid(line, 2, 2)));
    const std::uint32_t address = files::HalveRoundHalfEven(HexValue(files::Mid(line, 4, 4)));
    if (address < kEedataFirst || address >= kEedataEnd) {
      host.Message(Icon::Information, "不是有效的EEDATA文件！", kAppTitle);
      return EedataLoad::Invalid;
    }
    const std::uint32_t index = address - kEedataFirst;
    if (chip.EeSize < 0 || index > static_cast<std::uint32_t>(chip.EeSize)) break;
    const std::string_view data = files::Mid(line, 10, std::size_t{count} * 4);
    for (std::uint32_t i = 0; i < count; ++i) {
      // The low byte of each word; its high byte is ignored.
      const std::size_t at = std::size_t{index} + i;
      if (at < bytes.size()) bytes[at] = static_cast<std::uint8_t>(HexValue(files::Mid(data, 4 * i + 1, 2)));
    }
  }
  chip.EeBytes = std::move(bytes);
  return EedataLoad::Loaded;
}

void TakeEedataText(ChipParams& chip, const std::string& text, bool autoProgram) {
  if (chip.EeSize < 1) return;
  if (!autoProgram) {
    chip.EeFlag = kEeFlagAbsent;  // the bytes stay, the project no longer carries them
    return;
  }
  chip.EeFlag = kEeFlagPresent;
  std::size_t index = 0;
  std::size_t start = 0;
  while (start <= text.size()) {
    const std::size_t end = std::min(text.find("\r\n", start), text.size());
    const std::string_view line(text.data() + start, end - start);
    for (int k = 0; k < 16; ++k, ++index) {
      if (index < chip.EeBytes.size()) {
        chip.EeBytes[index] = static_cast<std::uint8_t>(HexValue(files::Mid(line, 7 + 3 * k, 2)));
      }
    }
    start = end + 2;
  }
}

std::string EedataCaretText(int line, int column) {
  const int inLine = std::clamp((column - 6) / 3, 0, 15);
  return "Address:" + Hex4(std::max(line, 0) * 16 + inLine) + "H";
}

CommandResult ReadEedataButton(Station& st, const EedataReport& status) {
  status("读取EEDATA中...");
  const CommandResult result = ReadEedataFromChip(st, status);
  status("读取完成");
  return result;
}

CommandResult WriteEedataButton(Station& st, const EedataReport& status) {
  status("烧录EEDATA中...");
  const CommandResult result = WriteEedataToChip(st, status);
  status("烧录完成");
  return result;
}

bool StartEedataWatch(Host& host, EedataWatch& watch, const std::string& path) {
  watch.Path = path;
  watch.On = IsFile(path);
  if (!watch.On) host.Message(Icon::Information, "未找到数据EEDATA文件！", kAppTitle);
  return watch.On;
}

WatchStep EedataWatchTick(Station& st, EedataWatch& watch, const EedataReport& status) {
  if (!watch.On) return WatchStep::Idle;
  if (!IsFile(watch.Path)) {
    st.host.Message(Icon::Information, "数据EEDATA文件异常！", kAppTitle);
    watch.On = false;
    return WatchStep::Stopped;
  }
  const std::string now = FileModifiedText(watch.Path);
  if (now == watch.LastSeen) return WatchStep::Idle;
  WriteEedataButton(st, status);
  watch.LastSeen = now;
  return WatchStep::Wrote;
}

}  // namespace lk::ops
