#include "link/download_commands.h"

#include <algorithm>

#include "link/protocol.h"

namespace lk {

using proto::Hi;
using proto::Lo;

RollRecord MakeRollRecord(const RollSettings* s) {
  RollRecord record;
  if (s == nullptr) return record;
  const int length = std::clamp(s->WordLength, 0, 4);
  for (int i = 0; i < length; ++i) {
    if (i < static_cast<int>(s->Addresses.size())) record.Addresses[i] = s->Addresses[i] & 0xFFFF;
    if (i < static_cast<int>(s->Counts.size())) record.Codes[i] = Lo(s->Counts[i]);
    if (i < static_cast<int>(s->Steps.size())) record.Steps[i] = Lo(s->Steps[i]);
  }
  record.Flags = static_cast<std::uint8_t>(0x01 | (s->Mode2262 ? 0x02 : 0) | (length << 4));
  return record;
}

Fault SendImageSum(Writer& writer, std::uint16_t imageSum) {
  return writer.ExchangeOk({5, proto::kImageSum, Lo(imageSum), Hi(imageSum)});
}

Fault SendRollingStart(Writer& writer, const RollRecord& r) {
  std::vector<std::uint8_t> packet = {14, proto::kRollingStart, proto::kRollMarkA5,
                                      proto::kRollMark69};
  for (std::uint16_t address : r.Addresses) {
    packet.push_back(Lo(address));
    packet.push_back(Hi(address));
  }
  packet.push_back(r.Flags);
  return writer.ExchangeOk(std::move(packet));
}

Fault SendRollingStep(Writer& writer, const RollRecord& r) {
  std::vector<std::uint8_t> packet = {11, proto::kRollingStep};
  packet.insert(packet.end(), r.Codes.begin(), r.Codes.end());
  packet.insert(packet.end(), r.Steps.begin(), r.Steps.end());
  return writer.ExchangeOk(std::move(packet));
}

Fault CheckStoredSum(Writer& writer, std::uint16_t imageSum) {
  // Checksum byte 0: 3 + 0xFD wraps.
  if (Fault f = writer.SendShort(proto::kCheckStoredSum); f != Fault::None) return f;
  Report a;
  if (Fault f = writer.ExpectAnswer(proto::kAnswerOk, a); f != Fault::None) return f;
  if (a[1] != 5 || (a[3] | (a[4] << 8)) != imageSum) {
    return writer.Fail(Fault::StoreMismatch, "stored image checksum");
  }
  return Fault::None;
}

Fault SendEedataInfo(Writer& writer, std::uint8_t eeFlag, std::uint16_t eeSum) {
  return writer.ExchangeOk({6, proto::kStoreEeInfo, eeFlag, Lo(eeSum), Hi(eeSum)});
}

Fault EndEedataInfo(Writer& writer) {
  if (Fault f = writer.SendShort(proto::kStoreEeInfoEnd); f != Fault::None) return f;
  Report a;
  return writer.ExpectAnswer(proto::kAnswerOk, a);
}

Fault ReadRollingStart(Writer& writer, const RollRecord& expected) {
  if (Fault f = writer.SendShort(proto::kReadRollingStart); f != Fault::None) return f;  // 0xEF
  Report a;
  if (Fault f = writer.ExpectAnswer(proto::kAnswerOk, a); f != Fault::None) return f;
  bool same = a[1] == 14 && a[3] == proto::kRollMark69 && a[4] == proto::kRollMarkA5 &&
              a[13] == expected.Flags;
  for (int i = 0; i < 4; ++i) {
    same = same && a[5 + 2 * i] == Lo(expected.Addresses[i]) &&
           a[6 + 2 * i] == Hi(expected.Addresses[i]);
  }
  return same ? Fault::None : writer.Fail(Fault::StoreMismatch, "rolling-code record 0xEC");
}

Fault ReadRollingStep(Writer& writer, const RollRecord& expected) {
  if (Fault f = writer.SendShort(proto::kReadRollingStep); f != Fault::None) return f;  // 0xF0
  Report a;
  if (Fault f = writer.ExpectAnswer(proto::kAnswerOk, a); f != Fault::None) return f;
  bool same = a[1] == 11;
  for (int i = 0; i < 4; ++i) {
    same = same && a[3 + i] == expected.Codes[i] && a[7 + i] == expected.Steps[i];
  }
  return same ? Fault::None : writer.Fail(Fault::StoreMismatch, "rolling-code record 0xED");
}

}  // namespace lk
