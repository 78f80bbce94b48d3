#include "core/profile.h"

#include <gtest/gtest.h>

#include <random>
#include <sys/stat.h>

#include "tests/support/recording_host.h"
#include "tests/support/temp_dir.h"

namespace lk {
namespace {

using test::RecordingHost;
using test::TempDir;

const char kSample[] =
    "TOP=0\r\n"  // before any header: belongs to no section
    "  [Main]  \r\n"
    "KEY=5 ;note\r\n"
    "*KEY=1\r\n"
    "EMPTY=\r"   // lone CR ends a line too
    "TWO=a=b\n"  // and a lone LF
    "BARE\r\n"
    "SPACED = 1\r\n"
    "[ Main ]\r\n"
    "INNER=1\r\n"
    "[Other]\r\n"
    "KEY=other\r\n"
    "[Main]\r\n"
    "KEY=second\r\n"
    "LAST=9";  // no line break at the end

class ProfileReadTest : public ::testing::Test {
 protected:
  TempDir dir;
  RecordingHost host;
  std::filesystem::path path = dir.Write("sample.ini", kSample);
};

TEST_F(ProfileReadTest, GetValueFollowsTheLineRules) {
  struct Case {
    const char* section;
    const char* key;
    const char* value;
  } cases[] = {
      {"Main", "KEY", "5"},  // comment cut before the trim; first match wins
      {"Main", "EMPTY", ""},     {"Main", "TWO", "a"},      {"Main", "BARE", ""},
      {"Main", "SPACED", ""},  // the key is "SPACED "
      {"Main", "SPACED ", " 1"}, {"Main", "TOP", ""},       {"Main", "INNER", ""},
      {" Main ", "INNER", "1"},  {"main", "KEY", ""},  // case-sensitive
      {"Main", "key", ""},       {"Other", "KEY", "other"}, {"Main", "LAST", "9"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(GetValue(host, path, c.section, c.key), c.value) << c.section << "/" << c.key;
  }
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(ProfileReadTest, ListsGatherSplitSections) {
  EXPECT_EQ(GetSections(host, path), (ProfileList{"", "Main", " Main ", "Other", "Main"}));
  EXPECT_EQ(GetSectionLines(host, path, "Main"),
            (ProfileList{"", "KEY=5", "EMPTY=", "TWO=a=b", "BARE", "SPACED = 1", "KEY=second",
                         "LAST=9"}));
  EXPECT_EQ(GetSectionKeys(host, path, "Main"),
            (ProfileList{"", "KEY", "EMPTY", "TWO", "BARE", "SPACED ", "KEY", "LAST"}));
  EXPECT_EQ(GetSectionKeys(host, path, "Missing"), (ProfileList{""}));
}

// No file to read gives the not-found message, a file that cannot be read (a FIFO is
// never waited for) a message naming it and why; once per read, with the empty result.
TEST_F(ProfileReadTest, AFileThatCannotBeReadIsReportedOncePerRead) {
  const auto missing = dir / "nope.ini";
  const auto fifo = dir / "fifo.ini";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  struct Case {
    std::filesystem::path path;
    std::string text;
    Icon icon;
  } cases[] = {
      {missing, "File: \"" + missing.string() + "\" Not Found!", Icon::Information},
      {dir.Path(), "File: \"" + dir.Path().string() + "\" Not Found!", Icon::Information},
      {fifo, "Cannot read \"" + fifo.string() + "\": it is a FIFO, not a regular file.",
       Icon::Critical},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.path);
    host.messages.clear();
    EXPECT_EQ(GetValue(host, c.path, "A", "B"), "");
    EXPECT_EQ(GetSections(host, c.path), (ProfileList{""}));
    EXPECT_EQ(GetSectionLines(host, c.path, "A"), (ProfileList{""}));
    EXPECT_EQ(GetSectionKeys(host, c.path, "A"), (ProfileList{""}));
    ASSERT_EQ(host.messages.size(), 4u);
    for (const auto& m : host.messages) {
      EXPECT_EQ(m.text, c.text);
      EXPECT_EQ(m.icon, c.icon);
      EXPECT_EQ(m.caption, kAppTitle);
    }
  }
}

TEST(ProfileMessageTest, Kinds) {
  RecordingHost host;
  ShowFileMessage(host, 2, "x");
  ShowFileMessage(host, 3, "x");
  ShowFileMessage(host, 0, "x");
  EXPECT_EQ(host.MessageTexts(), (std::vector<std::string>{"QVM File Unrecognized!"}));
}

TEST(ProfileReadRobustnessTest, OverlongLinesAndBinaryGarbage) {
  TempDir dir;
  RecordingHost host;
  std::string bytes = "[A]\r\nK=" + std::string(1 << 20, 'x') + "\r\n";
  for (int i = 0; i < 4096; ++i) bytes.push_back(static_cast<char>((i * 37) & 0xFF));
  bytes += "\r\n[A]\r\nZ=1\r\n";
  const auto p = dir.Write("junk.ini", bytes);
  EXPECT_EQ(GetValue(host, p, "A", "K").size(), 1u << 20);
  EXPECT_EQ(GetValue(host, p, "A", "Z"), "1");
  EXPECT_TRUE(host.messages.empty());
}

// ---- WriteValue ----

struct WriteCase {
  const char* name;
  std::string before;
  const char* section;
  const char* key;
  const char* value;
  std::string after;
};

class ProfileWriteTest : public ::testing::TestWithParam<WriteCase> {};

TEST_P(ProfileWriteTest, Writes) {
  const WriteCase& c = GetParam();
  TempDir dir;
  RecordingHost host;
  const auto p = dir.Write("w.ini", c.before);
  EXPECT_TRUE(WriteValue(host, p, c.section, c.key, c.value));
  EXPECT_EQ(dir.Read("w.ini"), c.after);
  EXPECT_TRUE(host.messages.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ProfileWriteTest,
    ::testing::Values(
        WriteCase{"ReplaceInPlace", "[Data]\r\nMcuType=A\r\nX=1\r\n", "Data", "McuType", "B",
                  "[Data]\r\nMcuType=B\r\nX=1\r\n"},
        WriteCase{"CaseInsensitive", "[data]\r\nmcutype=A\r\n", "Data", "McuType", "B",
                  "[data]\r\nmcutype=B\r\n"},
        WriteCase{"AppendAfterLastDataLine", "[A]\r\nX=1\r\n\r\n; note\r\n[B]\r\nY=2\r\n", "A", "Z",
                  "3", "[A]\r\nX=1\r\nZ=3\r\n\r\n; note\r\n[B]\r\nY=2\r\n"},
        WriteCase{"AppendToEmptySection", "[A]\r\n[B]\r\n", "A", "Z", "3", "[A]\r\nZ=3\r\n[B]\r\n"},
        WriteCase{"AppendAtEndWithoutBreak", "[A]\r\nX=1", "A", "Z", "3", "[A]\r\nX=1\r\nZ=3\r\n"},
        WriteCase{"NewSection", "[A]\r\nX=1\r\n", "B", "Y", "2", "[A]\r\nX=1\r\n[B]\r\nY=2\r\n"},
        WriteCase{"EmptyFile", "", "B", "Y", "2", "[B]\r\nY=2\r\n"},
        WriteCase{"LfFileStaysLf", "[A]\nX=1\n", "A", "X", "2", "[A]\nX=2\n"},
        WriteCase{"CrFileStaysCr", "[A]\rX=1\r", "B", "Y", "", "[A]\rX=1\r[B]\rY=\r"},
        WriteCase{"FirstOfSplitSection", "[A]\r\nX=1\r\n[B]\r\n[A]\r\nX=2\r\n", "A", "X", "9",
                  "[A]\r\nX=9\r\n[B]\r\n[A]\r\nX=2\r\n"},
        WriteCase{"BlanksAroundKey", "[ A ]\r\n  X = 1\r\n", "A", "X", "2", "[ A ]\r\nX=2\r\n"},
        WriteCase{"ValueCutAtLineBreak", "[A]\r\n", "A", "X", "1\r\n[B]", "[A]\r\nX=1\r\n"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ProfileWriteGbkTest, KeepsTheFilesEncoding) {
  TempDir dir;
  RecordingHost host;
  // A GBK file is read as GBK, and a new Chinese value is written as GBK too.
  const auto p = dir.Write("g.dat", "[\xD6\xD0]\r\nA=1\r\n");
  ASSERT_TRUE(WriteValue(host, p, "中", "A", "文"));
  EXPECT_EQ(dir.Read("g.dat"), "[\xD6\xD0]\r\nA=\xCE\xC4\r\n");
  EXPECT_EQ(GetValue(host, p, "中", "A"), "文");
  // A UTF-8 file stays UTF-8.
  const auto u = dir.Write("u.dat", "[中]\r\nA=1\r\n");
  ASSERT_TRUE(WriteValue(host, u, "中", "A", "文"));
  EXPECT_EQ(dir.Read("u.dat"), "[中]\r\nA=文\r\n");
}

TEST(ProfileWriteValuesTest, SeveralKeysInOneRewriteAndNoRewriteWhenUnchanged) {
  TempDir dir;
  RecordingHost host;
  const auto p = dir.Write("data.dat", "[Data]\r\nMcuType=X\r\n[RecentFile]\r\nfile0=a\r\n");
  ASSERT_TRUE(WriteValues(host, p, "RecentFile", {{"File0", "b"}, {"File1", "c"}, {"File0", "d"}}));
  EXPECT_EQ(dir.Read("data.dat"),
            "[Data]\r\nMcuType=X\r\n[RecentFile]\r\nfile0=d\r\nFile1=c\r\n");

  // Writing the same values again must not touch the file: its inode stays.
  const auto before = std::filesystem::last_write_time(p);
  struct stat st1 {};
  ASSERT_EQ(::stat(p.c_str(), &st1), 0);
  ASSERT_TRUE(WriteValues(host, p, "RecentFile", {{"File0", "d"}, {"FILE1", "c"}}));
  struct stat st2 {};
  ASSERT_EQ(::stat(p.c_str(), &st2), 0);
  EXPECT_EQ(st1.st_ino, st2.st_ino);
  EXPECT_EQ(before, std::filesystem::last_write_time(p));
  EXPECT_TRUE(host.messages.empty());
}

// A rewrite changes the line of its key and nothing else: random lines of any bytes
// (GBK, UTF-8, neither) around a settings section stay byte for byte.
TEST(ProfileWriteValuesTest, UntouchedLinesKeepTheirBytes) {
  TempDir dir;
  RecordingHost host;
  std::mt19937 random(20261124);
  for (int round = 0; round < 200; ++round) {
    auto junk = [&random] {
      std::string line;
      const int n = static_cast<int>(random() % 40);
      for (int i = 0; i < n; ++i) {
        char c = static_cast<char>(random() % 256);
        if (c == '\n' || c == '\r' || c == '[' || c == ';' || c == '=') c = '\xA9';
        line += c;
      }
      return line;
    };
    std::string before, after;
    for (int i = 0; i < 5; ++i) before += junk() + "\r\n";
    const std::string tail = "\xB2\xE2\xFF\xFE=" + junk() + "\r\n" + junk() + "\r\n";
    const std::string head = before + "[Rolling Code]\r\n" + junk() + "\r\n";
    const auto p = dir.Write("r.ini", head + "Count=1 2 3 4\r\n" + tail);
    ASSERT_TRUE(WriteValue(host, p, "Rolling Code", "Count", "1 2 3 5"));
    ASSERT_EQ(dir.Read("r.ini"), head + "Count=1 2 3 5\r\n" + tail) << round;
  }
}

TEST(ProfileWriteMissingTest, NeverCreatesAFileNorWaitsForAFifo) {
  TempDir dir;
  RecordingHost host;
  const auto p = dir / "missing.dat";
  EXPECT_FALSE(WriteValue(host, p, "A", "B", "C"));
  EXPECT_FALSE(std::filesystem::exists(p));
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0].text, p.string() + " not found.");
  EXPECT_EQ(host.messages[0].icon, Icon::Critical);
  EXPECT_EQ(host.messages[0].caption, "File Not Found");

  const auto fifo = dir / "data.dat";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_FALSE(WriteValue(host, fifo, "A", "B", "C"));
  ASSERT_EQ(host.messages.size(), 2u);
  EXPECT_EQ(host.messages[1].text,
            "Cannot read \"" + fifo.string() + "\": it is a FIFO, not a regular file.");
}

}  // namespace
}  // namespace lk
