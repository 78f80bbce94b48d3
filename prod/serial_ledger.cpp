#include "prod/serial_ledger.h"

#include <cstdio>

#include "prod/station.h"
#include "rolling/roll_code.h"

namespace lk::prod {
namespace {

// PostgreSQL: a process holds this session lock while its reservation is open; when its
// connection is gone (process or PC died) another station can take it.
std::string OwnerLock(std::int64_t id) {
  return "(19531, " + std::to_string(static_cast<std::int32_t>(id & 0x7FFFFFFF)) + ")";
}

std::string Hex4(std::int32_t v) {
  char text[16];
  std::snprintf(text, sizeof text, "%04X", static_cast<unsigned>(v) & 0xFFFFu);
  return text;
}

std::vector<std::int32_t> CodeOf(std::int64_t number) {
  std::vector<std::int32_t> code(4);
  for (int i = 0; i < 4; ++i) code[i] = static_cast<std::int32_t>((number >> (8 * i)) & 0xFF);
  return code;
}

// The code after `code` as the settings file's advance makes it.
bool Successor(std::vector<std::int32_t>& code, bool mode2262) {
  if (!NextRollCode(code)) return false;
  if (mode2262) Adjust2262(code);
  return true;
}

}  // namespace

std::int64_t CodeNumber(const std::vector<std::int32_t>& code) {
  std::int64_t n = 0;
  for (int i = 3; i >= 0; --i) n = (n << 8) | (code.at(static_cast<std::size_t>(i)) & 0xFF);
  return n;
}

SeriesLayout LayoutOf(const RollSettings& settings) {
  return {settings.Addresses, settings.WordLength, settings.Steps, settings.Mode2262};
}

std::string LayoutText(const SeriesLayout& layout) {
  std::string addresses;
  for (auto it = layout.Addresses.rbegin(); it != layout.Addresses.rend(); ++it) {
    addresses += (addresses.empty() ? "" : " ") + Hex4(*it);
  }
  return "addresses " + addresses + ", length " + std::to_string(layout.WordLength) + ", steps " +
         RollCodeText(layout.Steps) + ", 2262 mode " + (layout.Mode2262 ? "on" : "off");
}

Status SerialLedger::UseSeries(const std::string& series, const SeriesLayout& layout) {
  const std::string mine = LayoutText(layout);
  return db_.Transaction(kLockSerials, [&]() -> Status {
    auto rows = db_.Query("SELECT layout FROM series WHERE name = ?", {series});
    if (!rows) return Status::Error(rows.ErrorText());
    if (rows->empty()) {
      return db_.Exec("INSERT INTO series (name, layout, created_utc) VALUES (?, ?, ?)",
                      {series, mine, UtcNow()});
    }
    const std::string& theirs = rows->front().at(0);
    if (theirs != mine) {
      return Status::Error("The project's rolling code (" + mine + ") differs from series \"" +
                           series + "\" in " + db_.Name() + " (" + theirs +
                           "). Use the series' settings or another series name.");
    }
    return Ok();
  });
}

Result<Reservation> SerialLedger::Reserve(const std::string& series,
                                          const std::vector<std::int32_t>& wanted, bool mode2262) {
  if (wanted.size() != 4) {
    return Result<Reservation>::Error(
        "The production database keeps four-byte rolling codes only; the project's code has " +
        std::to_string(wanted.size()) + " bytes.");
  }
  for (const std::int32_t b : wanted) {
    if (b < 0 || b > 0xFF) {
      return Result<Reservation>::Error("Rolling Code " + RollCodeText(wanted) +
                                        " is not a valid code!");
    }
  }
  const bool pg = db_.Kind() == Backend::Postgres;
  const std::string station = StationName();
  Reservation out;
  auto done = db_.Transaction(kLockSerials, [&]() -> Status {
    out = Reservation{};
    auto open = db_.Query(
        "SELECT id, code, station, owner FROM serial WHERE series = ? AND state = 'RESERVED'",
        {series});
    if (!open) return Status::Error(open.ErrorText());
    for (const Row& r : *open) {
      const std::int64_t id = std::stoll(r.at(0));
      bool dead = false;
      if (r.at(2) == station) {
        dead = !ProcessAlive(r.at(3));
      } else if (pg) {
        // Another station's process holds its reservation's session lock while it lives.
        auto got = db_.Query("SELECT pg_try_advisory_lock" + OwnerLock(id));
        if (!got) return Status::Error(got.ErrorText());
        dead = !got->empty() && got->front().at(0) == "t";
        if (dead) (void)db_.Query("SELECT pg_advisory_unlock" + OwnerLock(id));
      }  // on one SQLite file another station's process cannot be told dead or alive
      if (!dead) continue;
      if (auto v = db_.Exec("UPDATE serial SET state = 'VOID', changed_utc = ? WHERE id = ?",
                            {UtcNow(), r.at(0)});
          !v) {
        return v;
      }
      out.Voided.push_back(CodeOf(std::stoll(r.at(1))));
    }

    auto held = db_.Query(
        "SELECT code FROM serial WHERE series = ? AND state <> 'RELEASED' AND code >= ? "
        "ORDER BY code",
        {series, std::to_string(CodeNumber(wanted))});
    if (!held) return Status::Error(held.ErrorText());
    std::vector<std::int32_t> code = wanted;
    for (const Row& r : *held) {
      const std::int64_t h = std::stoll(r.at(0));
      const std::int64_t c = CodeNumber(code);
      if (h < c) continue;
      if (h > c) break;
      if (!Successor(code, mode2262)) {
        return Status::Error("Rolling Code " + RollCodeText(code) +
                             " has no successor: the code space is exhausted!");
      }
    }
    if (code != wanted) out.MovedFrom = wanted;
    out.Code = code;
    const std::string now = UtcNow();
    auto id = db_.Query(
        "INSERT INTO serial (series, code, code_text, state, station, owner, reserved_utc, "
        "changed_utc) VALUES (?, ?, ?, 'RESERVED', ?, ?, ?, ?) RETURNING id",
        {series, std::to_string(CodeNumber(code)), RollCodeText(code), station, ProcessIdentity(),
         now, now});
    if (!id) return Status::Error(id.ErrorText());
    out.Id = std::stoll(id->at(0).at(0));
    // Taken before the row is visible to anyone, and kept past the commit (a session
    // lock): no other station ever sees this reservation without its owner's lock.
    if (pg) {
      if (auto held = db_.Query("SELECT pg_advisory_lock" + OwnerLock(out.Id)); !held) {
        return Status::Error(held.ErrorText());
      }
    }
    return Ok();
  });
  if (!done) {
    if (pg && out.Id != 0) (void)db_.Query("SELECT pg_advisory_unlock" + OwnerLock(out.Id));
    return Result<Reservation>::Error(done.ErrorText());
  }
  return out;
}

Status SerialLedger::Close(std::int64_t id, const char* state) {
  auto done = db_.Transaction(kLockSerials, [&]() -> Status {
    auto rows = db_.Query(
        std::string("UPDATE serial SET state = '") + state +
            "', changed_utc = ? WHERE id = ? AND state = 'RESERVED' RETURNING id",
        {UtcNow(), std::to_string(id)});
    if (!rows) return Status::Error(rows.ErrorText());
    if (rows->empty()) {
      return Status::Error(db_.Error("the reservation of this chip's rolling code (" +
                                     std::to_string(id) + ") is no longer open"));
    }
    return Ok();
  });
  if (db_.Kind() == Backend::Postgres) (void)db_.Query("SELECT pg_advisory_unlock" + OwnerLock(id));
  return done;
}

Status SerialLedger::Commit(std::int64_t id) { return Close(id, "COMMITTED"); }
Status SerialLedger::Release(std::int64_t id) { return Close(id, "RELEASED"); }

Result<SerialCounts> SerialLedger::Counts(const std::string& series) {
  auto rows = db_.Query("SELECT state, count(*) FROM serial WHERE series = ? GROUP BY state",
                        {series});
  if (!rows) return Result<SerialCounts>::Error(rows.ErrorText());
  SerialCounts c;
  for (const Row& r : *rows) {
    const std::int64_t n = std::stoll(r.at(1));
    if (r.at(0) == "RESERVED") c.Reserved = n;
    if (r.at(0) == "COMMITTED") c.Committed = n;
    if (r.at(0) == "RELEASED") c.Released = n;
    if (r.at(0) == "VOID") c.Void = n;
  }
  return c;
}

Result<std::vector<std::string>> SerialLedger::SeriesNames() {
  auto rows = db_.Query("SELECT name FROM series ORDER BY name");
  if (!rows) return Result<std::vector<std::string>>::Error(rows.ErrorText());
  std::vector<std::string> names;
  for (const Row& r : *rows) names.push_back(r.at(0));
  return names;
}

}  // namespace lk::prod
