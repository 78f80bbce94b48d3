#include "core/home.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "core/session.h"
#include "tests/support/recording_host.h"
#include "tests/support/temp_dir.h"

namespace lk {
namespace {

namespace fs = std::filesystem;
using test::RecordingHost;
using test::TempDir;

// An installed layout on disk: <prefix>/bin (no dat/) and <prefix>/share/lkwriter with
// the repository's own data, plus a home folder for the per-user program folder.
class InstalledHomeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(dir / "usr/bin");
    fs::create_directories(installed());
    for (const char* folder : {"dat", "cfg"}) {
      fs::copy(fs::path(LK_SOURCE_DIR) / folder, installed() / folder, fs::copy_options::recursive);
    }
    dir.Write("usr/share/lkwriter/doc/guide.pdf", "%PDF-1.4 guide");
    places.executableDir = dir / "usr/bin";
    places.installedCopy = installed();
    places.userFolder = user();
  }
  fs::path installed() const { return dir / "usr/share/lkwriter"; }
  fs::path user() const { return dir / "home/.local/share/lkwriter"; }
  std::string Read(const fs::path& p) const {
    return dir.Read(p.lexically_relative(dir.Path()).string());
  }
  void Write(const fs::path& p, const std::string& bytes) {
    dir.Write(p.lexically_relative(dir.Path()).string(), bytes);
  }

  TempDir dir;
  RecordingHost host;
  Home::Places places;
};

TEST_F(InstalledHomeTest, OrderOfThePlaces) {
  fs::create_directories(dir / "portable/dat");
  struct Case {
    const char* option;
    const char* environment;
    bool besideExecutable;
    fs::path expected;
  } cases[] = {
      {"/opt/a", "/opt/b", true, "/opt/a"},
      {"", "/opt/b", true, "/opt/b"},  // an empty --home does not count
      {nullptr, "", true, dir / "portable"},
      {nullptr, "", false, user()},
  };
  for (const Case& c : cases) {
    Home::Places p = places;
    if (c.option != nullptr) p.option = c.option;
    p.environment = c.environment;
    if (c.besideExecutable) p.executableDir = dir / "portable";
    const Home home = Home::Resolve(host, p);
    EXPECT_EQ(home.Root(), c.expected) << c.environment;
    EXPECT_EQ(home.SessionRoot(), c.expected) << c.environment;
    // Only the last place is ever created and seeded.
    EXPECT_EQ(fs::exists(user()), c.expected == user()) << c.environment;
  }
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(InstalledHomeTest, SeedsOnceAndNeverOverwritesWhatChanged) {
  Home home = Home::Resolve(host, places);
  ASSERT_EQ(home.Root(), user());
  for (const char* f : {"dat/qvmc.ini", "dat/cfg.ini", "dat/frm.dat", "dat/data.dat",
                        "cfg/QVM50F96A.cfg", "doc/guide.pdf"}) {
    EXPECT_EQ(Read(user() / f), Read(installed() / f)) << f;
  }
  // The session is kept in the per-user folder.
  ASSERT_TRUE(WriteMcuType(host, home, "QVM50F96B"));
  EXPECT_EQ(ReadMcuType(host, Home::Resolve(host, places)), "QVM50F96B");

  // The user edits an option file and deletes a document; two upgrades of the installed
  // copy then change the database, that option file, the session file and bring a new file.
  Write(user() / "cfg/QVM50F96A.cfg", "edited by the user");
  fs::remove(user() / "doc/guide.pdf");
  for (const char* release : {"2", "3"}) {
    Write(installed() / "dat/qvmc.ini", std::string("[MCULIST]\nM=1\n; release ") + release);
    Write(installed() / "cfg/QVM50F96A.cfg", std::string("release ") + release);
    Write(installed() / "dat/data.dat", std::string("[Data]\nMcuType=M") + release);
    Write(installed() / "cfg/NEW.cfg", std::string("new in release ") + release);
    home = Home::Resolve(host, places);
    EXPECT_EQ(Read(user() / "dat/qvmc.ini"), Read(installed() / "dat/qvmc.ini")) << release;
    EXPECT_EQ(Read(user() / "cfg/QVM50F96A.cfg"), "edited by the user") << release;
    EXPECT_EQ(ReadMcuType(host, home), "QVM50F96B") << release;
    EXPECT_EQ(Read(user() / "doc/guide.pdf"), "%PDF-1.4 guide") << release;
    // Copied by the previous upgrade and untouched since: this one replaces it.
    EXPECT_EQ(Read(user() / "cfg/NEW.cfg"), Read(installed() / "cfg/NEW.cfg")) << release;
  }
  EXPECT_TRUE(host.messages.empty());
}

// A per-user folder that cannot be made or filled: one message naming it, and the
// program starts on the installed data with the defaults of missing session files.
TEST_F(InstalledHomeTest, UnusableFolderStillStarts) {
  struct Case {
    const char* name;
    const char* blocker;  // a plain file where the seed needs a folder
    const char* expectedText;
    bool dataFromInstalled;
    bool sessionMissing;
  } cases[] = {
      {"folder", "home/.local", "cannot be created", true, true},
      {"dat", "home/.local/share/lkwriter/dat", "is incomplete: cannot copy dat/", true, true},
      {"cfg", "home/.local/share/lkwriter/cfg", "is incomplete: cannot copy cfg/", false, false},
  };
  for (const Case& c : cases) {
    fs::remove_all(dir / "home");
    dir.Write(c.blocker, "not a folder");
    RecordingHost h;
    const Home home = Home::Resolve(h, places);
    ASSERT_EQ(h.messages.size(), 1u) << c.name;
    EXPECT_NE(h.messages[0].text.find(user().string() + " " + c.expectedText), std::string::npos)
        << h.messages[0].text;
    EXPECT_EQ(home.Root(), c.dataFromInstalled ? installed() : user()) << c.name;
    EXPECT_EQ(home.DataDat(), user() / "dat/data.dat") << c.name;
    h.messages.clear();
    const ChipParams chip = LoadStartupChip(h, home, ReadMcuType(h, home));
    EXPECT_EQ(chip.Name, c.sessionMissing ? "QVM50F96A" : "LK3PW89") << c.name;
    EXPECT_EQ(h.messages.size(), c.sessionMissing ? 1u : 0u) << c.name;  // "Not Found!"
  }
}

TEST(HomePlacesTest, PerUserFolderFollowsXdgDataHome) {
  const char* savedXdg = std::getenv("XDG_DATA_HOME");
  const char* savedHome = std::getenv("HOME");
  const std::string xdg = savedXdg ? savedXdg : "", home = savedHome ? savedHome : "";
  struct Case {
    const char* xdg;
    const char* expected;
  } cases[] = {
      {"/data/x", "/data/x/lkwriter"},
      {"relative/x", "/home/u/.local/share/lkwriter"},  // not absolute: ignored
      {"", "/home/u/.local/share/lkwriter"},
  };
  ::setenv("HOME", "/home/u", 1);
  for (const Case& c : cases) {
    ::setenv("XDG_DATA_HOME", c.xdg, 1);
    EXPECT_EQ(Home::CurrentPlaces(std::nullopt).userFolder, fs::path(c.expected)) << c.xdg;
  }
  savedXdg ? ::setenv("XDG_DATA_HOME", xdg.c_str(), 1) : ::unsetenv("XDG_DATA_HOME");
  savedHome ? ::setenv("HOME", home.c_str(), 1) : ::unsetenv("HOME");
}

}  // namespace
}  // namespace lk
