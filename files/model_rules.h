// The chip-model rules applied when a file is opened: model aliases, the translation of
// configuration words for models that share a record with a different layout, the word
// rotation of certain models, and the checks of the words some chips reserve.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/host.h"
#include "core/project.h"

namespace lk {

// The record a model named in a file is loaded from ("QVM50P49D" -> "QVM50F775" ...).
std::string ResolveModelAlias(const std::string& model);

// Translates configuration words read from a file for an alias model into the layout of
// the record it shares; may show one of the two oscillator messages. Other models pass
// unchanged.
std::vector<std::int32_t> AdaptOscillatorConfig(Host& host, const std::string& model,
                                                std::vector<std::int32_t> configWords);

// Models whose HEX (and QVM) program words are stored one word out of place: the image
// is rotated right by one after reading.
bool IsHexRotatedModel(const std::string& model);

// Models whose project files store the program area rotated by one word.
bool IsProjectRotatedModel(const std::string& model);

// Last word to index 0, every other word one place up.
void RotateWordsRight(std::vector<std::int32_t>& words);
// Word 0 to the last index, every other word one place down.
void RotateWordsLeft(std::vector<std::int32_t>& words);

// The program words of a BIN or project file, from offset on, low byte first. 51A1
// parts keep their top 512 words to themselves: those are never taken from the file
// and always cleared, whatever the file size.
void ReadProgramArea(const std::string& bytes, std::size_t offset, ChipParams& chip);

// The reserved-word checks made after every open. A program that uses the reserved words
// is wiped (program and configuration words set to the blank value) after a message and
// the document caption is cleared. Returns true when the image was wiped.
bool CheckReservedAddresses(Host& host, Project& project);

}  // namespace lk
