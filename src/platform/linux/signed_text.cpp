#include "platform/linux/signed_text.h"

#include <glib.h>

#include <string_view>

namespace quorvel {
namespace {

constexpr std::string_view mark =
    "# Quorvel made this file and removes it, but keeps its hands off once it was edited: ";

/// Where the line stands, or is to stand.
std::size_t line_start(const std::string& text) {
  if (!text.starts_with("#!")) return 0;
  const std::size_t end = text.find('\n');
  return end == std::string::npos ? text.size() : end + 1;
}

std::string checksum(const std::string& body, const std::string& note) {
  const std::string all = note + '\n' + body;
  g_autofree char* sum =
      g_compute_checksum_for_data(G_CHECKSUM_SHA256, reinterpret_cast<const guchar*>(all.data()), all.size());
  return sum;
}

}  // namespace

std::string signed_text(const std::string& body, const std::string& note) {
  std::string text = body;
  return text.insert(line_start(body), std::string(mark) + checksum(body, note) + ' ' + note + '\n');
}

std::optional<std::string> note_in(const std::string& text) {
  const std::size_t start = line_start(text);
  const std::size_t end = text.find('\n', start);
  if (end == std::string::npos || text.compare(start, mark.size(), mark) != 0) return {};
  const std::size_t blank = text.find(' ', start + mark.size());
  if (blank >= end) return {};
  std::string note = text.substr(blank + 1, end - blank - 1);
  const std::string body = text.substr(0, start) + text.substr(end + 1);
  if (signed_text(body, note) != text) return {};
  return note;
}

}  // namespace quorvel
