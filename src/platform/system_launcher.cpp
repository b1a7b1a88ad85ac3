#include "platform/system_launcher.h"

#include <algorithm>
#include <string_view>

#include "text/case.h"

namespace quorvel {
namespace {

bool has_control_character(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](unsigned char byte) { return byte < ' ' || byte == 0x7F; });
}

bool is_web_address(const std::string& text) {
  if (has_control_character(text)) return false;
  for (const std::string_view scheme : {"http://", "https://"}) {
    const bool has_host = text.size() > scheme.size() && text[scheme.size()] != '/';
    if (has_host && lower_case(text.substr(0, scheme.size())) == scheme) return true;
  }
  return false;
}

}  // namespace

bool SystemLauncher::open(const std::string& target) {
  const bool quoted = target.size() >= 2 && target.front() == '"' && target.back() == '"';
  const std::string bare = quoted ? target.substr(1, target.size() - 2) : target;
  return is_web_address(bare) ? open_address(bare) : open_document(bare);
}

}  // namespace quorvel
