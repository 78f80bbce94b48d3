#include "prod/chip_records.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <tuple>

#include "prod/sha256.h"

namespace lk::prod {
namespace {

using nlohmann::json;

std::string Text(const json& j, const char* key) {
  const auto it = j.find(key);
  if (it == j.end() || it->is_null()) return "";
  return it->is_string() ? it->get<std::string>() : it->dump();
}

std::string CsvField(const std::string& s) {
  if (s.find_first_of(",\"\r\n") == std::string::npos) return s;
  std::string out = "\"";
  for (const char c : s) {
    if (c == '"') out += '"';
    out += c;
  }
  return out + "\"";
}

}  // namespace

Result<std::int64_t> ChipRecords::Append(const std::string& recordJson) {
  std::int64_t id = 0;
  auto done = db_.Transaction(kLockRecords, [&]() -> Status {
    auto head = db_.Query("SELECT last_id, hash FROM chain_head WHERE one = 1");
    if (!head) return Status::Error(head.ErrorText());
    const std::string prev = head->empty() ? kChainStart : head->front().at(1);
    const std::string hash = Sha256Hex(prev + recordJson);
    auto rows = db_.Query(
        "INSERT INTO chip_record (record, prev_hash, hash) VALUES (?, ?, ?) RETURNING id",
        {recordJson, prev, hash});
    if (!rows) return Status::Error(rows.ErrorText());
    id = std::stoll(rows->at(0).at(0));
    const std::string sql = head->empty()
                                ? "INSERT INTO chain_head (last_id, hash, one) VALUES (?, ?, 1)"
                                : "UPDATE chain_head SET last_id = ?, hash = ? WHERE one = 1";
    return db_.Exec(sql, {std::to_string(id), hash});
  });
  if (!done) return Result<std::int64_t>::Error(done.ErrorText());
  return id;
}

Result<ChainCheck> ChipRecords::Verify() {
  auto rows = db_.Query("SELECT id, record, prev_hash, hash FROM chip_record ORDER BY id");
  if (!rows) return Result<ChainCheck>::Error(rows.ErrorText());
  auto head = db_.Query("SELECT last_id, hash FROM chain_head WHERE one = 1");
  if (!head) return Result<ChainCheck>::Error(head.ErrorText());
  ChainCheck check;
  auto bad = [&check](std::int64_t id, std::string why) {
    check.Ok = false;
    check.FirstBadId = id;
    check.Why = std::move(why);
    return check;
  };
  std::string prev = kChainStart;
  for (const Row& r : *rows) {
    const std::int64_t id = std::stoll(r.at(0));
    if (r.at(2) != prev) {
      return bad(id, "it does not follow the record before it (one was deleted, moved or edited)");
    }
    if (Sha256Hex(r.at(2) + r.at(1)) != r.at(3)) return bad(id, "its text was changed");
    prev = r.at(3);
    ++check.Records;
  }
  const std::string lastId = rows->empty() ? "0" : rows->back().at(0);
  if (head->empty()) {
    if (!rows->empty()) return bad(std::stoll(lastId), "the chain's head is missing");
  } else if (head->front().at(0) != lastId || head->front().at(1) != prev) {
    return bad(std::stoll(head->front().at(0)),
               "the chain ends at record " + lastId + ": the records after it were removed");
  }
  return check;
}

Status ChipRecords::ExportJsonl(std::ostream& out) {
  auto rows = db_.Query("SELECT record FROM chip_record ORDER BY id");
  if (!rows) return Status::Error(rows.ErrorText());
  for (const Row& r : *rows) out << r.at(0) << '\n';
  return out ? Ok() : Status::Error("the export could not be written");
}

Status ChipRecords::ExportCsv(std::ostream& out) {
  auto rows = db_.Query("SELECT id, record, hash FROM chip_record ORDER BY id");
  if (!rows) return Status::Error(rows.ErrorText());
  out << "id,utc,station,command,writer_path,writer_version,writer_id,model,file,series,"
         "program_sha256,checksum,serial_used,serial_next,result,failure_line,exit,hash\n";
  for (const Row& r : *rows) {
    const json j = json::parse(r.at(1), nullptr, false);
    const json writer = j.is_object() ? j.value("writer", json::object()) : json::object();
    const json serial = j.is_object() ? j.value("serial", json::object()) : json::object();
    const std::vector<std::string> fields = {
        r.at(0), Text(j, "utc"), Text(j, "station"), Text(j, "command"), Text(writer, "path"),
        Text(writer, "version"), Text(writer, "id"), Text(j, "model"), Text(j, "file"),
        Text(j, "series"), Text(j, "program_sha256"), Text(j, "checksum"), Text(serial, "used"),
        Text(serial, "next"), Text(j, "result"), Text(j, "failure_line"), Text(j, "exit"),
        r.at(2)};
    for (std::size_t i = 0; i < fields.size(); ++i) out << (i ? "," : "") << CsvField(fields[i]);
    out << '\n';
  }
  return out ? Ok() : Status::Error("the export could not be written");
}

Result<std::vector<StatsRow>> ChipRecords::Stats(const std::string& series,
                                                 const std::vector<std::string>& uncounted) {
  auto rows = db_.Query("SELECT record FROM chip_record ORDER BY id");
  if (!rows) return Result<std::vector<StatsRow>>::Error(rows.ErrorText());
  // Kept in the order series, day, writer; keys sorted within each.
  std::map<std::tuple<int, std::string>, StatsRow> table;
  auto count = [&table](int order, const char* group, const std::string& key, bool passed) {
    StatsRow& row = table[{order, key}];
    row.Group = group;
    row.Key = key;
    ++(passed ? row.Passed : row.Failed);
    ++row.Total;
  };
  for (const Row& r : *rows) {
    const json j = json::parse(r.at(0), nullptr, false);
    if (!j.is_object()) continue;
    const std::string result = Text(j, "result");
    // A command that never reached a chip is neither a pass nor a fail of one.
    if (result != "passed" && result != "failed") continue;
    const std::string s = Text(j, "series");
    if (!series.empty() && s != series) continue;
    if (std::find(uncounted.begin(), uncounted.end(), Text(j, "command")) != uncounted.end()) {
      continue;
    }
    const bool passed = result == "passed";
    const json writer = j.value("writer", json::object());
    std::string w = Text(writer, "id");
    if (w.empty()) w = Text(writer, "path");
    count(0, "series", s.empty() ? "-" : s, passed);
    count(1, "day", Text(j, "utc").substr(0, 10), passed);
    count(2, "writer", w.empty() ? "-" : w, passed);
  }
  std::vector<StatsRow> out;
  for (auto& [key, row] : table) out.push_back(row);
  return out;
}

Result<std::vector<RecordRow>> ChipRecords::Last(int count, const std::string& filter) {
  std::vector<std::string> params;
  std::string sql = "SELECT id, record FROM chip_record";
  if (!filter.empty()) {
    // instr() and strpos() differ; both backends know LIKE, with the wildcards escaped.
    std::string pattern = "%";
    for (const char c : filter) {
      if (c == '%' || c == '_' || c == '\\') pattern += '\\';
      pattern += c;
    }
    sql += " WHERE record LIKE ? ESCAPE '\\'";
    params.push_back(pattern + "%");
  }
  sql += " ORDER BY id DESC LIMIT " + std::to_string(count > 0 ? count : 0);
  auto rows = db_.Query(sql, params);
  if (!rows) return Result<std::vector<RecordRow>>::Error(rows.ErrorText());
  std::vector<RecordRow> out;
  for (const Row& r : *rows) out.push_back({std::stoll(r.at(0)), r.at(1)});
  return out;
}

Result<std::pair<std::int64_t, std::int64_t>> ChipRecords::Counts(
    const std::string& station, const std::vector<std::string>& uncounted) {
  using Pair = std::pair<std::int64_t, std::int64_t>;
  // The station, the command and the result are in the JSON text; these exact
  // substrings are how the record writer spells them.
  std::vector<std::string> params = {"%\"station\":" + json(station).dump() + "%"};
  std::string sql =
      "SELECT sum(CASE WHEN record LIKE '%\"result\":\"passed\"%' THEN 1 ELSE 0 END),"
      " sum(CASE WHEN record LIKE '%\"result\":\"failed\"%' THEN 1 ELSE 0 END)"
      " FROM chip_record WHERE record LIKE ?";
  for (const std::string& command : uncounted) {
    sql += " AND record NOT LIKE ?";
    params.push_back("%\"command\":" + json(command).dump() + "%");
  }
  auto rows = db_.Query(sql, params);
  if (!rows) return Result<Pair>::Error(rows.ErrorText());
  auto num = [](const std::string& s) { return s.empty() ? 0 : std::stoll(s); };
  return Pair{num(rows->at(0).at(0)), num(rows->at(0).at(1))};
}

}  // namespace lk::prod
