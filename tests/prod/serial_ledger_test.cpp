#include "prod/serial_ledger.h"

#include <sys/wait.h>
#include <unistd.h>

#include <set>
#include <thread>

#include "rolling/roll_code.h"
#include "tests/prod/prod_rig.h"

namespace lk::test {
namespace {

using Code = std::vector<std::int32_t>;
const prod::SeriesLayout kLayout{{0x7F0, 0x7F1, 0x7F2, 0x7F3}, 4, {1, 0, 0, 0}, false};

class SerialLedgerTest : public ProdTest {};

Code After(Code c, int n = 1) {
  while (n-- > 0) NextRollCode(c);
  return c;
}

TEST_P(SerialLedgerTest, EachStateDecidesWhoGetsTheCodeNext) {
  prod::SerialLedger ledger(*db_);
  ASSERT_TRUE(ledger.UseSeries("line", kLayout).Ok());
  const Code start{1, 0, 0, 0};

  auto a = ledger.Reserve("line", start, false);  // open: the next chip must not get it
  ASSERT_TRUE(a.Ok()) << a.ErrorText();
  EXPECT_EQ(a->Code, start);
  EXPECT_FALSE(a->MovedFrom);
  auto b = ledger.Reserve("line", start, false);
  ASSERT_TRUE(b.Ok());
  EXPECT_EQ(b->Code, After(start));
  EXPECT_EQ(b->MovedFrom, start);

  ASSERT_TRUE(ledger.Commit(a->Id).Ok());
  ASSERT_TRUE(ledger.Release(b->Id).Ok());
  EXPECT_FALSE(ledger.Commit(b->Id).Ok()) << "a released code cannot be committed afterwards";

  // The released code goes to the next chip; a Count left behind the committed code
  // (an old copy of the settings file) is moved past it.
  auto c = ledger.Reserve("line", start, false);
  ASSERT_TRUE(c.Ok());
  EXPECT_EQ(c->Code, After(start));
  ASSERT_TRUE(ledger.Commit(c->Id).Ok());
  auto d = ledger.Reserve("line", start, false);
  ASSERT_TRUE(d.Ok());
  EXPECT_EQ(d->Code, After(start, 2));

  // Another series has its own codes; 2262 mode advances as the settings file does.
  ASSERT_TRUE(ledger.UseSeries("other", kLayout).Ok());
  auto e = ledger.Reserve("other", start, true);
  ASSERT_TRUE(e.Ok());
  EXPECT_EQ(e->Code, start);
  auto f = ledger.Reserve("other", start, true);
  ASSERT_TRUE(f.Ok());
  Code adjusted = After(start);
  Adjust2262(adjusted);
  EXPECT_EQ(f->Code, adjusted);

  const auto counts = ledger.Counts("line");
  ASSERT_TRUE(counts.Ok());
  EXPECT_EQ(counts->Committed, 2);
  EXPECT_EQ(counts->Released, 1);
  EXPECT_EQ(counts->Reserved, 1);

  EXPECT_FALSE(ledger.Reserve("line", {1, 0, 0}, false).Ok()) << "three-byte codes";
  EXPECT_FALSE(ledger.Reserve("line", {1, 0, 0, 0x100}, false).Ok());
}

TEST_P(SerialLedgerTest, ASeriesRefusesAnotherLayoutNamingBoth) {
  prod::SerialLedger ledger(*db_);
  ASSERT_TRUE(ledger.UseSeries("line", kLayout).Ok());
  ASSERT_TRUE(ledger.UseSeries("line", kLayout).Ok());
  prod::SeriesLayout moved = kLayout;
  moved.Addresses[0] = 0x7E0;
  const auto refused = ledger.UseSeries("line", moved);
  ASSERT_FALSE(refused.Ok());
  EXPECT_NE(refused.ErrorText().find(prod::LayoutText(kLayout)), std::string::npos);
  EXPECT_NE(refused.ErrorText().find(prod::LayoutText(moved)), std::string::npos);
  EXPECT_NE(refused.ErrorText().find("\"line\""), std::string::npos);
}

// A process that dies holding a reservation: the chip may carry the code, so the next
// run voids it and never gives it again.
TEST_P(SerialLedgerTest, AReservationOfADeadProcessIsVoided) {
  prod::SerialLedger ledger(*db_);
  ASSERT_TRUE(ledger.UseSeries("line", kLayout).Ok());
  const Code start{7, 0, 0, 0};
  const pid_t child = ::fork();
  if (child == 0) {
    auto db = prod::OpenDatabase(url_);
    const bool reserved = db.Ok() && prod::SerialLedger(**db).Reserve("line", start, false).Ok();
    ::_exit(reserved ? 0 : 1);  // no commit, no release: killed
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  ASSERT_EQ(WEXITSTATUS(status), 0);

  auto next = ledger.Reserve("line", start, false);
  ASSERT_TRUE(next.Ok()) << next.ErrorText();
  ASSERT_EQ(next->Voided.size(), 1u);
  EXPECT_EQ(next->Voided[0], start);
  EXPECT_EQ(next->Code, After(start));
  EXPECT_EQ(ledger.Counts("line")->Void, 1);
}

// Eight connections at once (as eight processes on one series, each with a stale Count):
// every code is given once.
TEST_P(SerialLedgerTest, ConcurrentStationsNeverShareACode) {
  constexpr int kThreads = 8, kEach = 25;
  ASSERT_TRUE(prod::SerialLedger(*db_).UseSeries("line", kLayout).Ok());
  std::vector<std::vector<std::int64_t>> got(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      auto db = prod::OpenDatabase(url_);
      if (!db.Ok()) return;
      prod::SerialLedger ledger(**db);
      for (int i = 0; i < kEach; ++i) {
        auto r = ledger.Reserve("line", {1, 0, 0, 0}, false);
        if (!r.Ok()) continue;
        // Every third run fails: its code goes back to the pool.
        if (i % 3 == 2) {
          (void)ledger.Release(r->Id);
        } else if (ledger.Commit(r->Id).Ok()) {
          got[t].push_back(prod::CodeNumber(r->Code));
        }
      }
    });
  }
  for (auto& th : threads) th.join();
  std::set<std::int64_t> distinct;
  std::size_t total = 0;
  for (const auto& g : got) {
    total += g.size();
    distinct.insert(g.begin(), g.end());
  }
  EXPECT_EQ(total, static_cast<std::size_t>(kThreads * (kEach - kEach / 3)));
  EXPECT_EQ(distinct.size(), total);
  EXPECT_EQ(prod::SerialLedger(*db_).Counts("line")->Void, 0) << "live reservations were voided";
}

INSTANTIATE_TEST_SUITE_P(Backends, SerialLedgerTest, ::testing::Values(Db::Sqlite, Db::Postgres),
                         DbName);

}  // namespace
}  // namespace lk::test
