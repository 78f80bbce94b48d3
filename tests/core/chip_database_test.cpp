#include "core/chip_database.h"

#include <gtest/gtest.h>

#include <map>

#include "core/profile.h"
#include "tests/support/recording_host.h"
#include "tests/support/temp_dir.h"

namespace lk {
namespace {

using test::RecordingHost;
using test::TempDir;

class ChipDatabaseTest : public ::testing::Test {
 protected:
  // A database whose [MCULIST] holds `models` and whose body is `sections`.
  Home WriteDb(const std::string& list, const std::string& sections) {
    dir.Write("dat/qvmc.ini", "[MCULIST]\r\n" + list + "\r\n" + sections);
    return Home(dir.Path());
  }
  TempDir dir;
  RecordingHost host;
};

// lkwriter-cli's chip command prints every field of a record read here (CLI test, whole
// output); this record holds the syntaxes and fields that one leaves out.
TEST_F(ChipDatabaseTest, FieldsTheChipCommandsRecordLeavesOut) {
  const Home home = WriteDb("FULL=1",
                            "[FULL]\r\n"
                            "ROMSIZE=7FF\r\nCONFIGLENTH=7\r\nEEDATA=F\r\nHEXMCU=3FFF\r\n"
                            "VPPREAD=4.75V\r\nVPPKEEP=6.5 ;volts\r\n"
                            "ERASE0=200\r\nERASE1=50\r\nERASEROM=1\r\nERASECONFIG=2\r\n"
                            "PROGTIME=100\r\nSPCADD=4093\r\nUNKNOWN=1\r\n");
  const ChipParams c = LoadChipParams(host, home, "FULL");
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(c.Name, "FULL");
  EXPECT_EQ(c.RomWords, std::vector<std::int32_t>(2048, 0x3FFF));
  EXPECT_EQ(c.ConfigLength, 3);  // capped
  EXPECT_EQ(c.ConfigWords.size(), 4u);
  EXPECT_EQ(c.EeBytes, std::vector<std::uint8_t>(16, 255));
  EXPECT_FLOAT_EQ(c.VppRead, 4.75f);
  EXPECT_FLOAT_EQ(c.VppKeep, 6.5f);
  EXPECT_EQ(c.Erase0, 200);
  EXPECT_EQ(c.Erase1, 50);
  EXPECT_EQ(c.EraseRom, 1);
  EXPECT_EQ(c.EraseConfig, 2);
  EXPECT_EQ(c.ProgTime, 100);
  EXPECT_EQ(c.SpcAdd, 4093);
}

TEST_F(ChipDatabaseTest, SizesAndDefaults) {
  const Home home = WriteDb("E0=1\r\nNOEE=1\r\nBIG=1\r\nK=1",
                            "[E0]\r\nEEDATA=0\r\nHEXMCU=FF\r\n"
                            "[NOEE]\r\nROMSIZE=7\r\n"
                            "[BIG]\r\nROMSIZE=FFFF\r\nHEXMCU=FFFF\r\n"
                            "[K]\r\nHEXMCU=3FFF\r\nROMSIZE=1\r\nHEXMCU=FF\r\n");
  const ChipParams e0 = LoadChipParams(host, home, "E0");
  EXPECT_EQ(e0.EeSize, 0);
  EXPECT_EQ(e0.EeBytes, std::vector<std::uint8_t>{255});  // one byte, though "no EEDATA"
  EXPECT_EQ(e0.RomWords, std::vector<std::int32_t>{0xFF});
  EXPECT_EQ(e0.ConfigWords, std::vector<std::int32_t>{0xFF});

  const ChipParams none = LoadChipParams(host, home, "NOEE");
  EXPECT_TRUE(none.EeBytes.empty());
  EXPECT_EQ(none.RomWords.size(), 8u);

  const ChipParams big = LoadChipParams(host, home, "BIG");
  EXPECT_EQ(big.RomSize, 65535);
  EXPECT_EQ(big.RomWords.size(), 65536u);

  // Keys may come in any order; the last HEXMCU counts for the arrays.
  EXPECT_EQ(LoadChipParams(host, home, "K").RomWords, (std::vector<std::int32_t>{0xFF, 0xFF}));
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(ChipDatabaseTest, OnlyTheFirstSectionOfAModelIsRead) {
  const Home home =
      WriteDb("A=1", "[A]\r\nROMSIZE=7\r\n[B]\r\nX=1\r\n[A]\r\nROMSIZE=F\r\nPROD=X\r\n");
  const ChipParams a = LoadChipParams(host, home, "A");
  EXPECT_EQ(a.RomSize, 7);
  EXPECT_EQ(a.Prod, "");
}

TEST_F(ChipDatabaseTest, UnknownModelsGiveTheEmptyRecordSilently) {
  const Home home =
      WriteDb("LISTED=1\r\n=1\r\nSPACE", "[UNLISTED]\r\nROMSIZE=7\r\n[]\r\nROMSIZE=7\r\n");
  for (const char* model : {"LISTED", "UNLISTED", "", "listed", "SPACE "}) {
    const ChipParams c = LoadChipParams(host, home, model);
    EXPECT_FALSE(c.Loaded()) << model;
    EXPECT_TRUE(c.RomWords.empty()) << model;
  }
  EXPECT_FALSE(LoadChipParams(host, Home(dir / "nowhere"), "LISTED").Loaded());
  EXPECT_TRUE(host.messages.empty());
}

TEST_F(ChipDatabaseTest, ValuesThatDoNotFitRefuseTheModel) {
  // The message names the model and the key of the line.
  for (const std::string line :
       {"INS=40000", "FST=300", "FST=-1", "EEDATA=8000", "EEDATA=FFFFFFFF", "BLANKCONFIG=FFFF",
        "VPPMODE=FFFF", "ROMSIZE=10000", "ROMSIZE=FFFFFFFF", "CONFIGLENTH=FFFFFFFF",
        "TYPE=123456789", "VPPPROG=1E39", "PROPIN=1,256", "SPCADD=32768"}) {
    RecordingHost h;
    const Home home = WriteDb("BAD=1", "[BAD]\r\nHEXMCU=3FFF\r\n" + line + "\r\n");
    EXPECT_FALSE(LoadChipParams(h, home, "BAD").Loaded()) << line;
    ASSERT_EQ(h.messages.size(), 1u) << line;
    EXPECT_EQ(h.messages[0].icon, Icon::Critical);
    EXPECT_EQ(h.messages[0].caption, kAppTitle);
    EXPECT_NE(h.messages[0].text.find("BAD"), std::string::npos) << h.messages[0].text;
    EXPECT_NE(h.messages[0].text.find(line.substr(0, line.find('='))), std::string::npos)
        << h.messages[0].text;
  }
}

TEST_F(ChipDatabaseTest, NonNumbersParseAsTheirLeadingNumber) {
  const Home home = WriteDb("N=1", "[N]\r\nINS=12abc\r\nFST=x\r\nROMSIZE=1Z\r\nPROPIN=,7\r\n");
  const ChipParams c = LoadChipParams(host, home, "N");
  EXPECT_EQ(c.Ins, 12);
  EXPECT_EQ(c.Fst, 0);
  EXPECT_EQ(c.RomSize, 1);
  EXPECT_EQ(c.ProPin, (std::vector<std::uint8_t>{0, 7}));
}

TEST_F(ChipDatabaseTest, FixedOverrideOfConfigWordOne) {
  dir.Write("dat/cfg.ini", "[QVM50F96B]\r\nW1|=FFFF\r\n");
  const Home home = WriteDb("QVM50F96B=1\r\nQVM50F96D=1\r\nQVM50F96A=1",
                            "[QVM50F96B]\r\nHEXMCU=3FFF\r\nCONFIGLENTH=1\r\n"
                            "[QVM50F96D]\r\nHEXMCU=3FFF\r\nCONFIGLENTH=1\r\n"
                            "[QVM50F96A]\r\nHEXMCU=3FFF\r\n");
  // Bits 8 and 12 cleared after the rules (which set every bit).
  EXPECT_EQ(LoadChipParams(host, home, "QVM50F96B").ConfigWords,
            (std::vector<std::int32_t>{0x3FFF, 0xEEFF}));
  EXPECT_EQ(LoadChipParams(host, home, "QVM50F96D").ConfigWords,
            (std::vector<std::int32_t>{0x3FFF, 0x3FFF}));
  // Without word 1 nothing happens.
  EXPECT_EQ(LoadChipParams(host, home, "QVM50F96A").ConfigWords,
            (std::vector<std::int32_t>{0x3FFF}));
}

TEST_F(ChipDatabaseTest, ListModelsInFileOrder) {
  const Home home = WriteDb("B=1\r\nA\r\n*C=1\r\nD=1 ;x", "");
  EXPECT_EQ(ListModels(host, home), (std::vector<std::string>{"B", "A", "D"}));
  EXPECT_TRUE(ListModels(host, Home(dir / "none")).empty());
  EXPECT_EQ(host.messages.size(), 1u);  // the missing database is reported
}

// The shipped database: every listed model loads, and the chips that the program's
// special cases name have the sizes those cases address.
TEST(ShippedDatabaseTest, EveryModelLoadsAndFitsItsRules) {
  RecordingHost host;
  const Home home(LK_SOURCE_DIR);
  const std::vector<std::string> models = ListModels(host, home);
  ASSERT_GE(models.size(), 40u);
  for (const std::string& m : models) {
    const ChipParams c = LoadChipParams(host, home, m);
    EXPECT_TRUE(c.Loaded()) << m;
    EXPECT_LE(m.size(), 12u) << m;
    EXPECT_FALSE(c.Prod.empty()) << m;
    EXPECT_TRUE(c.HexMcu == 0x3FFF || c.HexMcu == 0xFFFF) << m;
    EXPECT_EQ(c.RomWords.size(), static_cast<std::size_t>(c.RomSize) + 1) << m;
  }
  EXPECT_TRUE(host.messages.empty());

  const auto load = [&](const char* m) { return LoadChipParams(host, home, m); };
  EXPECT_EQ(load("QVM50F96B").RomSize, 0xFFF);
  EXPECT_EQ(load("QVM50F96B").HexMcu, 0xFFFF);
  EXPECT_EQ(load("QVM50P99").RomWords.size(), 2048u);
  EXPECT_EQ(load("QVM50P99").HexMcu, 0x3FFF);
  EXPECT_EQ(load("QVM50P79C").RomWords.size(), 2048u);
  EXPECT_EQ(load("LK467").Prod, "LK467");
  std::map<std::string, const ChipParams> byProd;
  for (const std::string& m : models) byProd.emplace(load(m.c_str()).Prod, load(m.c_str()));
  for (const char* prod :
       {"32A3", "30D1", "30D2", "30D3", "30D4", "2023", "34A4", "16E1", "101E", "101F", "51A1"}) {
    EXPECT_EQ(byProd.count(prod), 1u) << prod;
  }
  EXPECT_GE(byProd.at("32A3").RomSize, 0x3FF);
  for (const char* prod : {"30D1", "30D2", "30D3", "30D4"}) {
    EXPECT_EQ(byProd.at(prod).ConfigLength, 2) << prod;
  }
  EXPECT_EQ(byProd.at("16E1").ConfigLength, 3);
  EXPECT_EQ(byProd.at("16E1").Type, 0xFEFF);
  EXPECT_GE(byProd.at("101E").ConfigLength, 1);
  EXPECT_GE(byProd.at("101F").ConfigLength, 1);
  EXPECT_EQ(byProd.at("51A1").RomSize, 0x7FF);
  for (const char* m :
       {"QVM50F96A", "QVM50F98B", "QVM50F98D",  "QVM50F96D", "QVM75P82",  "QVM50P49C", "QVM50F775",
        "QVM50F776", "QVM50F77B", "QVM50F5759", "QVM50F576", "QVM75P89",  "QVM75P86",  "QVM75P88",
        "QVM55P47",  "QVM55P49",  "QVM55P21",   "QVM55P99",  "QVM55P96",  "QVM53P45",  "QVM53P74",
        "QVM53P64",  "QVM50T43",  "QVM50P49D",  "QVM75P89B", "QVM75P86B", "QVM75P88B", "LK3PW89",
        "LK3PS89",   "LK3P7674",  "LK3P86E",    "LK3P89E",   "LK3P48A"}) {
    EXPECT_TRUE(load(m).Loaded()) << m;
  }
}

}  // namespace
}  // namespace lk
