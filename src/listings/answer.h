#pragma once

#include <string>
#include <string_view>

#include "platform/log.h"

/// Reading the answers of the listings service.
namespace quorvel {

/// Reads the text's bytes of the code page as UTF-8 of up to three bytes a character. Bytes that start no such sequence
/// stand for themselves, and continuation bytes are taken as they come. A text of one byte gives an empty one.
/// When a sequence runs past the end, is half a character of another encoding, or is a long form of an ASCII character,
/// which could smuggle a path separator into a file name, the text comes back as it was, with a log line.
std::string UTF8Decode(std::string_view text, Log& log);

}  // namespace quorvel
