#include "platform/windows/wide.h"

#include <algorithm>

#include "text/characters.h"

namespace quorvel {
namespace {

// Folders must leave room for a classic file name behind them.
constexpr std::size_t max_classic_path = MAX_PATH - 12;
constexpr std::wstring_view unlimited = L"\\\\?\\", device = L"\\\\.\\", unlimited_share = L"\\\\?\\UNC\\";

bool is_high(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

bool is_low(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

bool is_stray_byte(char32_t character) {
  return character >= stray_byte_base + 0x80 && character <= stray_byte_base + 0xFF;
}

/// The surrogate that three stray bytes at `at` stand for; 0 when they stand for none.
wchar_t surrogate_at(const std::u32string& characters, std::size_t at) {
  if (at + 3 > characters.size()) return 0;
  char32_t bytes[3];
  for (std::size_t i = 0; i < 3; ++i) {
    if (!is_stray_byte(characters[at + i])) return 0;
    bytes[i] = characters[at + i] - stray_byte_base;
  }
  if (bytes[0] != 0xED || bytes[1] < 0xA0 || bytes[1] > 0xBF || bytes[2] > 0xBF) return 0;
  return static_cast<wchar_t>(0xD000 | (bytes[1] & 0x3F) << 6 | (bytes[2] & 0x3F));
}

void append_character(std::wstring& text, char32_t character) {
  if (character < 0x10000) {
    text += static_cast<wchar_t>(character);
  } else {
    text += static_cast<wchar_t>(0xD7C0 + (character >> 10));
    text += static_cast<wchar_t>(0xDC00 | (character & 0x3FF));
  }
}

/// False when something had to be replaced by a mark.
bool translate(std::string_view text, std::wstring& wide) {
  const std::u32string characters = decode(text);
  bool whole = true;
  for (std::size_t at = 0; at < characters.size(); ++at) {
    if (!is_stray_byte(characters[at])) {
      append_character(wide, characters[at]);
    } else if (const wchar_t surrogate = surrogate_at(characters, at); surrogate != 0) {
      wide += surrogate;
      at += 2;
    } else {
      wide += L'?';
      whole = false;
    }
  }
  return whole;
}

std::wstring full_path(const std::wstring& path) {
  std::wstring full(MAX_PATH, L'\0');
  while (true) {
    const DWORD size = GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (size < full.size()) return full.substr(0, size);
    full.resize(size);
  }
}

}  // namespace

std::string to_utf8(std::wstring_view text) {
  std::string bytes;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char32_t unit = text[at];
    if (is_high(unit) && at + 1 < text.size() && is_low(text[at + 1])) {
      append(bytes, 0x10000 + ((unit & 0x3FF) << 10 | (text[++at] & 0x3FF)));
    } else if (is_high(unit) || is_low(unit)) {
      // By hand: the program's own characters of these numbers are bytes of no text.
      for (const char32_t byte : {0xE0 | unit >> 12, 0x80 | (unit >> 6 & 0x3F), 0x80 | (unit & 0x3F)}) {
        bytes += static_cast<char>(byte);
      }
    } else {
      append(bytes, unit);
    }
  }
  return bytes;
}

std::optional<std::wstring> to_utf16(std::string_view text) {
  std::wstring wide;
  if (!translate(text, wide)) return {};
  return wide;
}

std::wstring to_utf16_or_marks(std::string_view text) {
  std::wstring wide;
  translate(text, wide);
  return wide;
}

std::optional<std::wstring> system_path(const std::string& path) {
  if (path.empty() || path.find('\0') != std::string::npos) return {};
  std::optional<std::wstring> wide = to_utf16(path);
  if (wide) wide = system_path(*wide);
  return wide;
}

std::wstring system_path(const std::wstring& path) {
  if (path.size() < max_classic_path || path.starts_with(unlimited) || path.starts_with(device)) return path;
  const std::wstring full = full_path(path);
  if (full.starts_with(L"\\\\")) return std::wstring(unlimited_share) + full.substr(2);
  return std::wstring(unlimited) + full;
}

bool is_long_form(const std::wstring& path) {
  return path.starts_with(unlimited);
}

std::string error_text(DWORD code) {
  wchar_t* text = nullptr;
  const DWORD size =
      FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                     nullptr, code, 0, reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  std::string said = size == 0 ? "error " + std::to_string(code) : to_utf8({text, size});
  LocalFree(text);
  said.erase(said.find_last_not_of("\r\n ") + 1);
  return said;
}

}  // namespace quorvel
