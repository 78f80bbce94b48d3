#include "prod/chip_records.h"

#include <sstream>

#include "tests/prod/prod_rig.h"

namespace lk::test {
namespace {

class ChipRecordsTest : public ProdTest {
 protected:
  // Five records: series a/b, two writers, one day, passes and fails.
  void Fill() {
    prod::ChipRecords records(*db_);
    const char* rows[] = {
        R"({"utc":"2026-11-24T08:00:00.000Z","station":"pc1","series":"a","writer":{"id":"00000001","path":"p1"},"result":"passed","failure_line":""})",
        R"({"utc":"2026-11-24T08:01:00.000Z","station":"pc1","series":"a","writer":{"id":"00000001","path":"p1"},"result":"failed","failure_line":"Verify Fail!"})",
        R"({"utc":"2026-11-24T08:02:00.000Z","station":"pc2","series":"b","writer":{"id":"","path":"p2"},"result":"passed","failure_line":"say \"x\", then"})",
        R"({"utc":"2026-11-25T08:03:00.000Z","station":"pc2","series":"b","writer":{"id":"","path":"p2"},"result":"no writer"})",
        R"({"utc":"2026-11-25T08:04:00.000Z","station":"pc1","series":"a","writer":{"id":"00000001","path":"p1"},"result":"passed"})",
    };
    for (const char* r : rows) ASSERT_TRUE(records.Append(r).Ok());
  }
};

TEST_P(ChipRecordsTest, TheChainFindsEveryKindOfTampering) {
  Fill();
  prod::ChipRecords records(*db_);
  auto check = records.Verify();
  ASSERT_TRUE(check.Ok()) << check.ErrorText();
  EXPECT_TRUE(check->Ok);
  EXPECT_EQ(check->Records, 5);

  struct Case {
    const char* What;
    std::vector<std::string> Sql;
    std::int64_t FirstBad;
  };
  const Case cases[] = {
      {"edited", {"UPDATE chip_record SET record = replace(record, 'failed', 'passed') WHERE id = 2"}, 2},
      {"deleted", {"DELETE FROM chip_record WHERE id = 3"}, 4},
      {"reordered",
       {"UPDATE chip_record SET id = 100 WHERE id = 2", "UPDATE chip_record SET id = 2 WHERE id = 3",
        "UPDATE chip_record SET id = 3 WHERE id = 100"},
       2},
      {"truncated", {"DELETE FROM chip_record WHERE id = 5"}, 5},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.What);
    ASSERT_TRUE(db_->Exec(GetParam() == Db::Sqlite ? "DELETE FROM chip_record"
                                                   : "TRUNCATE chip_record RESTART IDENTITY")
                    .Ok());
    ASSERT_TRUE(db_->Exec("DELETE FROM chain_head").Ok());
    Fill();
    for (const std::string& sql : c.Sql) ASSERT_TRUE(db_->Exec(sql).Ok()) << sql;
    auto bad = records.Verify();
    ASSERT_TRUE(bad.Ok());
    EXPECT_FALSE(bad->Ok);
    EXPECT_EQ(bad->FirstBadId, c.FirstBad) << bad->Why;
  }
}

TEST_P(ChipRecordsTest, StatsExportAndTheRecordsWindowReadTheRecords) {
  Fill();
  prod::ChipRecords records(*db_);
  auto stats = records.Stats("");
  ASSERT_TRUE(stats.Ok()) << stats.ErrorText();
  std::string text;
  for (const auto& r : *stats) {
    text += r.Group + " " + r.Key + " " + std::to_string(r.Passed) + "/" + std::to_string(r.Failed) +
            "/" + std::to_string(r.Total) + "\n";
  }
  // "no writer" reached no chip: it is in no count.
  EXPECT_EQ(text,
            "series a 2/1/3\nseries b 1/0/1\nday 2026-11-24 2/1/3\nday 2026-11-25 1/0/1\n"
            "writer 00000001 2/1/3\nwriter p2 1/0/1\n");
  EXPECT_EQ(records.Stats("b")->size(), 3u);

  std::ostringstream csv, jsonl;
  ASSERT_TRUE(records.ExportCsv(csv).Ok());
  ASSERT_TRUE(records.ExportJsonl(jsonl).Ok());
  const std::string c = csv.str(), j = jsonl.str();
  EXPECT_NE(c.find(",\"say \"\"x\"\", then\","), std::string::npos) << c;
  EXPECT_EQ(std::count(c.begin(), c.end(), '\n'), 6);
  EXPECT_EQ(std::count(j.begin(), j.end(), '\n'), 5);

  auto last = records.Last(2, "\"station\":\"pc2\"");
  ASSERT_TRUE(last.Ok());
  ASSERT_EQ(last->size(), 2u);
  EXPECT_EQ((*last)[0].Id, 4);
  EXPECT_EQ((*last)[1].Id, 3);
  EXPECT_TRUE(records.Last(5, "100%_")->empty()) << "the filter's wildcards are text";
  auto counts = records.Counts("pc1");
  ASSERT_TRUE(counts.Ok());
  EXPECT_EQ(*counts, std::make_pair(std::int64_t{2}, std::int64_t{1}));
}

INSTANTIATE_TEST_SUITE_P(Backends, ChipRecordsTest, ::testing::Values(Db::Sqlite, Db::Postgres),
                         DbName);

}  // namespace
}  // namespace lk::test
