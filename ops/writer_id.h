// The writer-ID dialog's logic: set the writer's identifier (optionally counting up for
// the next writer) and read it back. All results are message boxes of the information
// kind; the last identifier set is kept under "Setting"/"ID" of dat/data.dat.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "ops/station.h"

namespace lk::ops {

// The digits the dialog shows on load: the stored identifier as the last 6 characters
// of "000000" followed by the number.
std::string StoredWriterIdText(Host& host, const Home& home);

// The key filter of the dialog's text box: the digits 0 to 9 and Backspace only.
bool AcceptWriterIdKey(char key);

// The identifier typed in the dialog: decimal digits only, at most 4294967295.
std::optional<std::uint32_t> ParseWriterIdText(const std::string& text);

// The last `width` characters of zeros followed by the number (6 for the load and the
// read, 8 after the increment).
std::string PaddedWriterId(std::uint64_t number, int width);

struct WriterIdSet {
  Outcome Verdict = Outcome::Failed;
  // The dialog's text after a successful set with increment ("00000042"); empty otherwise.
  std::string NextText;
};

// Sends the identifier as four bytes, lowest first, reads it back and compares all
// four: "设置成功！" + "烧录器ID为：" + the number, or "烧录器ID设置失败！". With
// increment the next number is stored in data.dat and returned as the dialog's text.
WriterIdSet SetWriterIdentifier(Station& st, std::uint32_t id, bool increment);

// Reads the identifier: "读取完成！" + "烧录器ID：" + six digits of its low 16 bits, or
// "读取错误！".
Outcome ReadWriterIdentifier(Station& st);

}  // namespace lk::ops
