// Character sets of the data files. The files were historically written in the
// Chinese ANSI code page (GBK, code page 936); files saved by newer tools are UTF-8.
// Inside the program every text is UTF-8; a file is written back in its own encoding.
#pragma once

#include <string>
#include <string_view>

namespace lk {

enum class TextEncoding { Utf8, Utf8Bom, Gbk };

// True when bytes are well-formed UTF-8 (no overlongs, no surrogates, <= U+10FFFF).
bool IsValidUtf8(std::string_view bytes);

// Which encoding a file's bytes are in: valid UTF-8 (with or without a BOM) or GBK.
TextEncoding DetectEncoding(std::string_view bytes);

// Decodes file bytes to UTF-8 (a UTF-8 BOM is dropped). Bytes that are not valid GBK
// become U+FFFD, so garbage never stops a reader.
std::string DecodeText(std::string_view bytes, TextEncoding encoding);

// The text with every byte sequence that is not UTF-8 replaced by U+FFFD (one for each
// byte stepped over); valid text comes back unchanged.
std::string ToValidUtf8(std::string_view text);

// Encodes UTF-8 text for a file in the given encoding (the BOM is added back for
// Utf8Bom). Characters that GBK cannot hold become "?", as the ANSI profile writer does.
// The result is always valid in the target encoding: bytes of the text that are not
// UTF-8 (a file name from the system can hold any byte) become U+FFFD or "?", so that
// one value can never change how the rest of a file is read back.
std::string EncodeText(std::string_view utf8, TextEncoding encoding);

}  // namespace lk
