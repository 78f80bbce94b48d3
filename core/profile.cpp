#include "core/profile.h"

#include <algorithm>
#include <cctype>
#include <optional>

#include "core/atomic_file.h"
#include "core/text_codec.h"

namespace lk {
namespace {

// Calls visit(text) for each data line of the wanted section, gathering every part of a
// split section; visit returns false to stop the scan.
template <typename Visit>
void ForEachSectionLine(const ProfileText& profile, const std::string& section, Visit visit) {
  bool open = false;
  profile.ForEachLine([&](const ProfileLine& line) {
    if (line.kind == ProfileLineKind::Header) {
      open = line.text == section;
    } else if (line.kind == ProfileLineKind::Data && open) {
      return visit(line.text);
    }
    return true;
  });
}

// ---- writing, with the rules of the Windows profile writer ----

std::string_view TrimWhite(std::string_view s) {
  const auto isWhite = [](char c) { return c == ' ' || c == '\t'; };
  while (!s.empty() && isWhite(s.front())) s.remove_prefix(1);
  while (!s.empty() && isWhite(s.back())) s.remove_suffix(1);
  return s;
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](unsigned char x, unsigned char y) {
           return std::tolower(x) == std::tolower(y);
         });
}

enum class WriterLineKind { Other, Header, Entry };

struct WriterLine {
  WriterLineKind kind = WriterLineKind::Other;
  std::string_view name;  // section name or key, trimmed
};

// The Windows writer's view of a line: "[name]" (name trimmed, ']' optional), ";"
// comments, "key=value" or a bare key.
WriterLine ParseForWriting(std::string_view raw) {
  WriterLine out;
  const std::string_view line = TrimWhite(raw);
  if (line.empty() || line.front() == ';') return out;
  if (line.front() == '[') {
    out.kind = WriterLineKind::Header;
    const std::size_t close = line.find(']');
    out.name = TrimWhite(line.substr(1, close == std::string_view::npos ? close : close - 1));
    return out;
  }
  out.kind = WriterLineKind::Entry;
  out.name = TrimWhite(line.substr(0, line.find('=')));
  return out;
}

// The line break the file already uses (CR LF for a file without any).
// The lines of text, each with its "\n" (the last one may have none). GBK and UTF-8 never
// hold a 0x0A byte inside a character, so the bytes of a file and its decoded text split
// into the same lines.
std::vector<std::string> SplitKeepingEnds(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start < text.size()) {
    const std::size_t end = text.find('\n', start);
    const std::size_t stop = end == std::string::npos ? text.size() : end + 1;
    lines.push_back(text.substr(start, stop - start));
    start = stop;
  }
  return lines;
}

std::string DetectLineEnd(const std::string& text) {
  const std::size_t pos = text.find_first_of("\r\n");
  if (pos == std::string::npos) return "\r\n";
  if (text[pos] == '\n') return "\n";
  return pos + 1 < text.size() && text[pos + 1] == '\n' ? "\r\n" : "\r";
}

std::string FirstLine(const std::string& s) {
  return s.substr(0, s.find_first_of("\r\n"));
}

// Sets key=value in the first section of that name (both matched case-insensitively),
// replacing the value in place, inserting the key after the section's last entry, or
// appending the section at the end of the file. Only the line written changes: every
// other line keeps its bytes and its own line break.
void SetEntry(std::string& text, const std::string& eol, const std::string& section,
              const std::string& key, const std::string& value) {
  TextLines lines(text);
  bool inSection = false;
  std::size_t insertAt = 0;
  bool insertNeedsBreak = false;  // the line to insert after ends the file without a break
  for (std::string_view raw; lines.Next(raw);) {
    const WriterLine w = ParseForWriting(raw);
    if (!inSection) {
      inSection = w.kind == WriterLineKind::Header && EqualsNoCase(w.name, section);
    } else if (w.kind == WriterLineKind::Header) {
      break;
    } else if (w.kind != WriterLineKind::Entry) {
      continue;
    } else if (EqualsNoCase(w.name, key)) {
      // A value cannot span lines: a line break would open new lines in the file.
      const std::string line = std::string(w.name) + "=" + FirstLine(value);
      text.replace(lines.Start(), lines.End() - lines.Start(), line);
      return;
    }
    if (inSection) {
      insertAt = lines.NextStart();
      insertNeedsBreak = lines.End() == lines.NextStart();
    }
  }
  const std::string entry = FirstLine(key) + "=" + FirstLine(value) + eol;
  if (inSection) {
    text.insert(insertAt, insertNeedsBreak ? eol + entry : entry);
    return;
  }
  if (!text.empty() && text.back() != '\n' && text.back() != '\r') text += eol;
  text += "[" + FirstLine(section) + "]" + eol + entry;
}

// Cut at ";", trim blanks.
std::string_view NormaliseProfileLine(std::string_view line) {
  line = line.substr(0, line.find(';'));
  const std::size_t b = line.find_first_not_of(' ');
  if (b == std::string_view::npos) return {};
  const std::size_t e = line.find_last_not_of(' ');
  return line.substr(b, e - b + 1);
}

}  // namespace

std::string ProfileKey(std::string_view line) { return std::string(line.substr(0, line.find('='))); }

std::string ProfileValue(std::string_view line) {
  const std::size_t eq = line.find('=');
  if (eq == std::string_view::npos) return "";
  const std::size_t next = line.find('=', eq + 1);
  return std::string(
      line.substr(eq + 1, next == std::string_view::npos ? std::string_view::npos : next - eq - 1));
}

ProfileLine ClassifyProfileLine(std::string_view raw) {
  ProfileLine out;
  const std::string_view line = NormaliseProfileLine(raw);
  if (line.empty()) return out;
  if (line.size() >= 2 && line.front() == '[' && line.back() == ']') {
    out.kind = ProfileLineKind::Header;
    out.text = line.substr(1, line.size() - 2);
  } else if (line.front() != '*') {
    out.kind = ProfileLineKind::Data;
    out.text = line;
  }
  return out;
}

std::optional<ProfileText> ProfileText::Load(const std::filesystem::path& path,
                                             ReadOutcome& outcome) {
  std::string bytes;
  outcome = ReadRegularFile(path, kMaxDataFileBytes, bytes);
  if (!outcome.Ok()) return std::nullopt;
  return ProfileText(DecodeText(bytes, DetectEncoding(bytes)));
}

std::optional<ProfileText> ProfileText::Read(Host& host, const std::filesystem::path& path,
                                             int values) {
  ReadOutcome outcome;
  std::optional<ProfileText> profile = Load(path, outcome);
  if (outcome.NoFile()) {
    for (int i = 0; i < values; ++i) ShowFileMessage(host, 1, path);
  } else if (!outcome.Ok()) {
    host.FileUnreadable(CannotReadText(path, outcome));
  }
  return profile;
}

ProfileList ProfileText::Sections() const {
  ProfileList out{""};
  ForEachLine([&](const ProfileLine& line) {
    if (line.kind == ProfileLineKind::Header) out.emplace_back(line.text);
    return true;
  });
  return out;
}

ProfileList ProfileText::SectionLines(const std::string& section) const {
  ProfileList out{""};
  ForEachSectionLine(*this, section, [&](std::string_view line) {
    out.emplace_back(line);
    return true;
  });
  return out;
}

ProfileList ProfileText::SectionKeys(const std::string& section) const {
  ProfileList out{""};
  ForEachSectionLine(*this, section, [&](std::string_view line) {
    out.push_back(ProfileKey(line));
    return true;
  });
  return out;
}

std::string ProfileText::Value(const std::string& section, const std::string& key) const {
  std::string value;
  ForEachSectionLine(*this, section, [&](std::string_view line) {
    if (line.substr(0, line.find('=')) != key) return true;
    value = ProfileValue(line);
    return false;
  });
  return value;
}

void ShowFileMessage(Host& host, int kind, const std::filesystem::path& path) {
  if (kind == 1) {
    host.Message(Icon::Information, "File: \"" + path.string() + "\" Not Found!", kAppTitle);
  } else if (kind == 2) {
    host.Message(Icon::Information, "QVM File Unrecognized!", kAppTitle);
  }
}

ProfileList GetSections(Host& host, const std::filesystem::path& path) {
  const auto profile = ProfileText::Read(host, path);
  return profile ? profile->Sections() : ProfileList{""};
}

ProfileList GetSectionLines(Host& host, const std::filesystem::path& path,
                            const std::string& section) {
  const auto profile = ProfileText::Read(host, path);
  return profile ? profile->SectionLines(section) : ProfileList{""};
}

ProfileList GetSectionKeys(Host& host, const std::filesystem::path& path,
                           const std::string& section) {
  const auto profile = ProfileText::Read(host, path);
  return profile ? profile->SectionKeys(section) : ProfileList{""};
}

std::string GetValue(Host& host, const std::filesystem::path& path, const std::string& section,
                     const std::string& key) {
  const auto profile = ProfileText::Read(host, path);
  return profile ? profile->Value(section, key) : "";
}

bool WriteValues(Host& host, const std::filesystem::path& path, const std::string& section,
                 const std::vector<std::pair<std::string, std::string>>& entries) {
  std::string bytes;
  const ReadOutcome read = ReadRegularFile(path, kMaxDataFileBytes, bytes);
  if (read.NoFile()) {
    for (std::size_t i = 0; i < entries.size(); ++i) {
      host.Message(Icon::Critical, path.string() + " not found.", "File Not Found");
    }
    return false;
  }
  if (!read.Ok()) {
    host.FileUnreadable(CannotReadText(path, read));
    return false;
  }
  const TextEncoding encoding = DetectEncoding(bytes);
  std::string text = DecodeText(bytes, encoding);
  const std::string eol = DetectLineEnd(text);
  // Every line as read, with its bytes from the file: a line the writer does not change
  // keeps them, even bytes that are neither text of the file's encoding nor UTF-8 (they
  // would come back as "?" from a decode and encode).
  std::vector<std::string> lines = SplitKeepingEnds(text);
  std::vector<std::optional<std::string>> raw;
  for (std::string& line : SplitKeepingEnds(bytes)) raw.emplace_back(std::move(line));
  if (raw.size() != lines.size()) raw.assign(lines.size(), std::nullopt);  // never expected
  for (const auto& [key, value] : entries) {
    std::string changed = text;
    SetEntry(changed, eol, section, key, value);
    std::vector<std::string> next = SplitKeepingEnds(changed);
    // The lines before and after the change are the same lines: only those between are new.
    std::size_t head = 0;
    while (head < lines.size() && head < next.size() && lines[head] == next[head]) ++head;
    std::size_t tail = 0;
    while (tail < lines.size() - head && tail < next.size() - head &&
           lines[lines.size() - 1 - tail] == next[next.size() - 1 - tail]) {
      ++tail;
    }
    std::vector<std::optional<std::string>> merged(raw.begin(), raw.begin() + head);
    merged.resize(next.size() - tail);
    merged.insert(merged.end(), raw.end() - static_cast<std::ptrdiff_t>(tail), raw.end());
    raw = std::move(merged);
    lines = std::move(next);
    text = std::move(changed);
  }
  std::string encoded;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    encoded += raw[i] ? *raw[i] : EncodeText(lines[i], encoding);
  }
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
