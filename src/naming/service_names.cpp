#include "naming/service_names.h"

#include <algorithm>
#include <array>
#include <utility>

#include "text/case.h"
#include "text/characters.h"
#include "text/cut.h"
#include "text/unicode_forms.h"

namespace quorvel {
namespace {

constexpr auto devices = std::to_array<std::string_view>({"con", "prn", "aux", "nul", "conin$", "conout$"});
constexpr auto numbered_devices = std::to_array<std::string_view>({"com", "lpt"});

/// In no file's name.
constexpr std::u32string_view forbidden(U"\\*?\"<>|\0", 8);

bool is_removed(char32_t character) {
  const bool is_control = (character > 0 && character < U' ') || character == 0x7F;
  const bool is_override = (character >= 0x202A && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
  return is_control || is_override;
}

bool is_device(std::string_view name) {
  const std::string device = lower_case(trim(name.substr(0, name.find('.'))));
  if (std::find(devices.begin(), devices.end(), device) != devices.end()) return true;
  const std::u32string characters = decode(device);
  // The superscripts 1, 2 and 3 count as digits there.
  return characters.size() == 4 &&
         std::u32string_view(U"0123456789\u00B9\u00B2\u00B3").find(characters[3]) != std::u32string_view::npos &&
         std::find(numbered_devices.begin(), numbered_devices.end(), device.substr(0, 3)) != numbered_devices.end();
}

}  // namespace

std::string without_control_characters(const std::string& name, Log& log) {
  std::u32string characters = decode(name);
  const std::size_t removed = std::erase_if(characters, is_removed);
  if (removed == 0) return name;
  std::string cleaned = encode(characters);
  log.debug_log(
      "Removed " + std::to_string(removed) + " control characters from the service's name \"" + cleaned + "\"",
      LogLevel::Normal);
  return cleaned;
}

bool lacks_characters(std::string_view name, std::string_view gave) {
  const auto kept = [](std::string_view text) {
    std::string plain(text);
    replace_all(plain, "&amp;", "&");
    replace_all(plain, "&quot;", "\"");
    std::u32string characters = decode(composed(plain));
    std::erase_if(characters, [](char32_t character) {
      return is_removed(character) || character == U' ' || forbidden.find(character) != std::u32string_view::npos ||
             character == U':' || character == U'/' || character == U'\u00A0';
    });
    return characters;
  };
  return kept(name) != kept(gave);
}

std::string exact_name(std::string_view name) {
  static constexpr std::pair<char32_t, std::u32string_view> replaced[] = {{U':', U" -"}, {U'/', U"-"}};
  std::u32string made;
  for (const char32_t character : decode(name)) {
    const auto* const found =
        std::find_if(std::begin(replaced), std::end(replaced), [&](const auto& row) { return row.first == character; });
    std::u32string_view piece(&character, 1);
    if (found != std::end(replaced)) {
      piece = found->second;
    } else if (character == U'\t' || character == U'\n' || character == U'\u00A0') {
      piece = U" ";
    } else if (is_removed(character) || forbidden.find(character) != std::u32string_view::npos) {
      continue;
    }
    if (piece.front() == U' ' && (made.empty() || made.back() == U' ')) piece.remove_prefix(1);
    made += piece;
  }
  while (made.ends_with(U' ')) made.pop_back();
  return composed(encode(made));  // only now: what was left out may have stood between a letter and its mark
}

std::optional<std::string> name_trouble(std::string_view name, char separator) {
  const std::string quoted = "\"" + std::string(name) + "\"";
  if (name == "." || name == "..") return quoted + " stands for a folder";
  if (separator != '\\' || name.empty()) return {};
  if (name.find_first_not_of(". ") == std::string_view::npos) return quoted + " is dropped from paths";
  if (is_device(name)) return quoted + " is the name of a device";
  return {};
}

std::optional<std::string> mask_trouble(std::string_view mask, const MaskValues& values,
                                        std::string (*expand)(std::string_view, const MaskValues&), char separator) {
  for (const std::string_view part : split(mask, std::string_view(&separator, 1))) {
    const std::string name = expand(part, values);
    if (name == part) continue;
    // Names from the service are clean; this is for what nobody has thought of.
    if (name.find(separator) != std::string::npos) return "\"" + name + "\" leads into another folder";
    if (std::optional<std::string> trouble = name_trouble(name, separator)) return trouble;
  }
  return {};
}

std::string without_ends(std::string folder, char separator) {
  if (separator != '\\') return folder;
  std::size_t start = folder.starts_with("\\\\") ? folder.find('\\', 2) : 0;
  while (start != std::string::npos) {
    const std::size_t end = std::min(folder.find('\\', start + 1), folder.size());
    const std::size_t kept = folder.find_last_not_of(". ", end - 1) + 1;
    if (kept > start + 1) folder.erase(kept, end - kept);
    start = folder.find('\\', start + 1);
  }
  return folder;
}

}  // namespace quorvel
