#include "platform/stamp_text.h"

#include <charconv>

namespace quorvel {

std::string stamp_text(const FileStamp& stamp) {
  return std::to_string(stamp.size) + " " + std::to_string(stamp.modified_ns);
}

std::optional<FileStamp> stamp_in(std::string_view text) {
  FileStamp stamp;
  const char* const end = text.data() + text.size();
  const auto size = std::from_chars(text.data(), end, stamp.size);
  if (size.ec != std::errc() || size.ptr == end || *size.ptr != ' ') return {};
  const auto time = std::from_chars(size.ptr + 1, end, stamp.modified_ns);
  return time.ec == std::errc() && time.ptr == end ? std::optional(stamp) : std::nullopt;
}

}  // namespace quorvel
