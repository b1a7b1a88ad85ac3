#pragma once

#include <wx/string.h>

#include <string>
#include <string_view>

/// Texts on their way between the core, whose strings are UTF-8, and the toolkit.
namespace quorvel::ui {

/// For the eye: bytes that are not UTF-8, as file names may hold, are shown as escapes.
wxString to_wx(std::string_view text);

std::string from_wx(const wxString& text);

/// The bytes of a file name that the toolkit gave, also where they are not UTF-8.
std::string path_from_wx(const wxString& path);

/// What is offered where files are picked, of `types` with ";" between them: "Supported Types|*.avi;*.mkv|All
/// Files|*.*"
wxString file_filter(const std::string& types);

}  // namespace quorvel::ui
