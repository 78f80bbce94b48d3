#include "link/identity_commands.h"

#include <algorithm>

#include "link/protocol.h"

namespace lk {

Fault SetWriterId(Writer& writer, const std::array<std::uint8_t, 4>& id) {
  if (Fault f = writer.SendFramed({7, proto::kSetId, id[0], id[1], id[2], id[3]});
      f != Fault::None) {
    return f;
  }
  Report answer;
  return writer.ReceiveReport(answer);
}

Result<std::vector<std::uint8_t>> GetWriterId(Writer& writer) {
  if (Fault f = writer.SendPacket({3, proto::kGetId, 0xA5}); f != Fault::None) return f;
  Report answer;
  if (Fault f = writer.ReceiveReport(answer); f != Fault::None) return f;
  const int n = std::clamp<int>(answer[1], 1, proto::kPacketLength);
  return std::vector<std::uint8_t>(answer.begin() + 1, answer.begin() + 1 + n);
}

std::optional<WriterIdentity> ParseWriterId(const std::vector<std::uint8_t>& a) {
  if (a.size() < 8 || a[1] != proto::kIdStatus) return std::nullopt;
  WriterIdentity id;
  id.Number = a[2] | (a[3] << 8) | (a[4] << 16) | (static_cast<std::uint32_t>(a[5]) << 24);
  id.Dedicated = a[6] < proto::kFirstGeneralWriterType || a[7] != proto::kGeneralWriterMarker;
  return id;
}

}  // namespace lk
