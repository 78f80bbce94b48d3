#include "core/profile.h"

#include <algorithm>
#include <cctype>

#include "core/atomic_file.h"
#include "core/text_codec.h"

namespace lk {
namespace {

// Reads and splits a file for the readers. A missing file (or a folder) shows the
// not-found message, a file that cannot be read (a FIFO, a device, too large, refused by
// the system) a message naming the path and why; both give false.
bool LoadProfile(Host& host, const std::filesystem::path& path, std::vector<std::string>& lines) {
  std::string text;
  const ReadOutcome read = ReadTextFile(path, text);
  if (read.NoFile()) {
    ShowFileMessage(host, 1, path);
    return false;
  }
  if (!read.Ok()) {
    host.Message(Icon::Critical, CannotReadText(path, read), kAppTitle);
    return false;
  }
  lines = SplitProfileLines(text);
  return true;
}

// Calls visit(line) for each data line of the wanted section, gathering every part of a
// split section; visit returns false to stop the scan.
template <typename Visit>
void ForEachSectionLine(const std::vector<std::string>& lines, const std::string& section,
                        Visit visit) {
  bool open = false;
  for (const std::string& raw : lines) {
    const ProfileLine line = ClassifyProfileLine(raw);
    if (line.kind == ProfileLineKind::Header) {
      open = line.text == section;
    } else if (line.kind == ProfileLineKind::Data && open) {
      if (!visit(line.text)) return;
    }
  }
}

// ---- writing, with the rules of the Windows profile writer ----

std::string TrimWhite(const std::string& s) {
  const auto isWhite = [](char c) { return c == ' ' || c == '\t'; };
  std::size_t b = 0, e = s.size();
  while (b < e && isWhite(s[b])) ++b;
  while (e > b && isWhite(s[e - 1])) --e;
  return s.substr(b, e - b);
}

bool EqualsNoCase(const std::string& a, const std::string& b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](unsigned char x, unsigned char y) {
           return std::tolower(x) == std::tolower(y);
         });
}

enum class WriterLineKind { Other, Header, Entry };

struct WriterLine {
  WriterLineKind kind = WriterLineKind::Other;
  std::string name;  // section name or key, trimmed
};

// The Windows writer's view of a line: "[name]" (name trimmed, ']' optional), ";"
// comments, "key=value" or a bare key.
WriterLine ParseForWriting(const std::string& raw) {
  WriterLine out;
  const std::string line = TrimWhite(raw);
  if (line.empty() || line.front() == ';') return out;
  if (line.front() == '[') {
    out.kind = WriterLineKind::Header;
    const std::size_t close = line.find(']');
    out.name =
        TrimWhite(line.substr(1, close == std::string::npos ? std::string::npos : close - 1));
    return out;
  }
  out.kind = WriterLineKind::Entry;
  out.name = TrimWhite(line.substr(0, line.find('=')));
  return out;
}

// The line break the file already uses (CR LF for a file without any).
std::string DetectLineEnd(const std::string& text) {
  const std::size_t pos = text.find_first_of("\r\n");
  if (pos == std::string::npos) return "\r\n";
  if (text[pos] == '\n') return "\n";
  return pos + 1 < text.size() && text[pos + 1] == '\n' ? "\r\n" : "\r";
}

std::string FirstLine(const std::string& s) {
  return s.substr(0, s.find_first_of("\r\n"));
}

// Cut at ";", trim blanks.
std::string NormaliseProfileLine(const std::string& line) {
  std::string out = line.substr(0, line.find(';'));
  const std::size_t b = out.find_first_not_of(' ');
  if (b == std::string::npos) return "";
  const std::size_t e = out.find_last_not_of(' ');
  return out.substr(b, e - b + 1);
}

}  // namespace

std::string ProfileKey(const std::string& line) { return line.substr(0, line.find('=')); }

std::string ProfileValue(const std::string& line) {
  const std::size_t eq = line.find('=');
  if (eq == std::string::npos) return "";
  const std::size_t next = line.find('=', eq + 1);
  return line.substr(eq + 1, next == std::string::npos ? std::string::npos : next - eq - 1);
}

ProfileLine ClassifyProfileLine(const std::string& raw) {
  ProfileLine out;
  std::string line = NormaliseProfileLine(raw);
  if (line.empty()) return out;
  if (line.size() >= 2 && line.front() == '[' && line.back() == ']') {
    out.kind = ProfileLineKind::Header;
    out.text = line.substr(1, line.size() - 2);
  } else if (line.front() != '*') {
    out.kind = ProfileLineKind::Data;
    out.text = std::move(line);
  }
  return out;
}

std::vector<std::string> SplitProfileLines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  std::size_t i = 0;
  while (i < text.size()) {
    const char c = text[i];
    if (c == '\r' || c == '\n') {
      lines.emplace_back(text, start, i - start);
      if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
      start = i + 1;
    }
    ++i;
  }
  if (start < text.size()) lines.emplace_back(text, start, text.size() - start);
  return lines;
}

ReadOutcome ReadTextFile(const std::filesystem::path& path, std::string& utf8Text) {
  std::string bytes;
  const ReadOutcome read = ReadRegularFile(path, kMaxDataFileBytes, bytes);
  if (read.Ok()) utf8Text = DecodeText(bytes, DetectEncoding(bytes));
  return read;
}

void ShowFileMessage(Host& host, int kind, const std::filesystem::path& path) {
  if (kind == 1) {
    host.Message(Icon::Information, "File: \"" + path.string() + "\" Not Found!", kAppTitle);
  } else if (kind == 2) {
    host.Message(Icon::Information, "QVM File Unrecognized!", kAppTitle);
  }
}

ProfileList GetSections(Host& host, const std::filesystem::path& path) {
  ProfileList out{""};
  std::vector<std::string> lines;
  if (!LoadProfile(host, path, lines)) return out;
  for (const std::string& raw : lines) {
    ProfileLine line = ClassifyProfileLine(raw);
    if (line.kind == ProfileLineKind::Header) out.push_back(std::move(line.text));
  }
  return out;
}

ProfileList GetSectionLines(Host& host, const std::filesystem::path& path,
                            const std::string& section) {
  ProfileList out{""};
  std::vector<std::string> lines;
  if (!LoadProfile(host, path, lines)) return out;
  ForEachSectionLine(lines, section, [&](const std::string& line) {
    out.push_back(line);
    return true;
  });
  return out;
}

ProfileList GetSectionKeys(Host& host, const std::filesystem::path& path,
                           const std::string& section) {
  ProfileList out{""};
  std::vector<std::string> lines;
  if (!LoadProfile(host, path, lines)) return out;
  ForEachSectionLine(lines, section, [&](const std::string& line) {
    out.push_back(ProfileKey(line));
    return true;
  });
  return out;
}

std::string GetValue(Host& host, const std::filesystem::path& path, const std::string& section,
                     const std::string& key) {
  std::vector<std::string> lines;
  if (!LoadProfile(host, path, lines)) return "";
  std::string value;
  ForEachSectionLine(lines, section, [&](const std::string& line) {
    if (ProfileKey(line) != key) return true;
    value = ProfileValue(line);
    return false;
  });
  return value;
}

namespace {

// Sets key=value in the first section of that name (both matched case-insensitively),
// replacing the value in place, appending the key after the section's last entry, or
// appending the section at the end of the file.
void SetEntry(std::vector<std::string>& lines, bool& trailingEol, const std::string& section,
              const std::string& key, const std::string& value) {
  // A value cannot span lines: a line break would open new lines in the file.
  const std::string entry = FirstLine(key) + "=" + FirstLine(value);

  std::size_t header = lines.size();
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const WriterLine w = ParseForWriting(lines[i]);
    if (w.kind == WriterLineKind::Header && EqualsNoCase(w.name, section)) {
      header = i;
      break;
    }
  }
  if (header == lines.size()) {
    lines.push_back("[" + FirstLine(section) + "]");
    lines.push_back(entry);
    trailingEol = true;
    return;
  }
  std::size_t lastEntry = header;
  std::size_t found = lines.size();
  for (std::size_t i = header + 1; i < lines.size(); ++i) {
    const WriterLine w = ParseForWriting(lines[i]);
    if (w.kind == WriterLineKind::Header) break;
    if (w.kind != WriterLineKind::Entry) continue;
    lastEntry = i;
    if (EqualsNoCase(w.name, key)) {
      found = i;
      break;
    }
  }
  if (found != lines.size()) {
    lines[found] = ParseForWriting(lines[found]).name + "=" + FirstLine(value);
  } else {
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(lastEntry) + 1, entry);
    if (lastEntry + 2 == lines.size()) trailingEol = true;
  }
}

}  // namespace

bool WriteValues(Host& host, const std::filesystem::path& path, const std::string& section,
                 const std::vector<std::pair<std::string, std::string>>& entries) {
  std::string bytes;
  const ReadOutcome read = ReadRegularFile(path, kMaxDataFileBytes, bytes);
  if (read.NoFile()) {
    host.Message(Icon::Critical, path.string() + " not found.", "File Not Found");
    return false;
  }
  if (!read.Ok()) {
    host.Message(Icon::Critical, CannotReadText(path, read), kAppTitle);
    return false;
  }
  const TextEncoding encoding = DetectEncoding(bytes);
  const std::string text = DecodeText(bytes, encoding);
  const std::string eol = DetectLineEnd(text);
  std::vector<std::string> lines = SplitProfileLines(text);
  bool trailingEol = !text.empty() && (text.back() == '\n' || text.back() == '\r');
  for (const auto& [key, value] : entries) SetEntry(lines, trailingEol, section, key, value);

  std::string out;
  std::size_t total = 0;
  for (const auto& l : lines) total += l.size() + eol.size();
  out.reserve(total);
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i > 0) out += eol;
    out += lines[i];
  }
  if (trailingEol) out += eol;

  const std::string encoded = EncodeText(out, encoding);
  // Nothing changed: leave the file (and the disk) alone.
  if (encoded == bytes) return true;
  std::string error;
  if (!WriteFileAtomically(path, encoded, error)) {
    host.Message(Icon::Critical, error, kAppTitle);
    return false;
  }
  return true;
}

bool WriteValue(Host& host, const std::filesystem::path& path, const std::string& section,
                const std::string& key, const std::string& value) {
  return WriteValues(host, path, section, {{key, value}});
}

}  // namespace lk
