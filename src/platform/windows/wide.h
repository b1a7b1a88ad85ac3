#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <string_view>

/// Between the texts of the program, UTF-8, and those of the system, UTF-16.
namespace quorvel {

/// A surrogate without its partner, which file names may hold, becomes the three bytes that UTF-8 would have for it; so
/// every name survives the way here and back.
std::string to_utf8(std::wstring_view text);

/// Empty when `text` is not what to_utf8() makes: then it names nothing on this system.
std::optional<std::wstring> to_utf16(std::string_view text);

/// For texts that are only shown or stored: "?" stands for what cannot be translated.
std::wstring to_utf16_or_marks(std::string_view text);

/// The path as the system's calls take it: beyond the classic limit of length in the form that has none.
/// Empty for an empty path, for one that holds a NUL and for what is no text.
std::optional<std::wstring> system_path(const std::string& path);
std::wstring system_path(const std::wstring& path);

/// Whether the path is in that form, which the shell does not take.
bool is_long_form(const std::wstring& path);

/// What the system says of an error, without a line break at its end.
std::string error_text(DWORD code);

}  // namespace quorvel
