#include "ui/text.h"

#include <wx/strconv.h>

#include <filesystem>

#include "text/cut.h"
#include "ui/desktop.h"

namespace quorvel::ui {

wxString to_wx(std::string_view text) {
  wxString shown = wxString::FromUTF8(text.data(), text.size());
  if (shown.empty() && !text.empty()) {
    shown = wxString(text.data(), wxMBConvUTF8(wxMBConvUTF8::MAP_INVALID_UTF8_TO_OCTAL), text.size());
  }
  return shown;
}

std::string from_wx(const wxString& text) {
  const auto bytes = text.utf8_str();
  return {bytes.data(), bytes.length()};
}

std::string path_from_wx(const wxString& path) {
  using Native = std::filesystem::path::value_type;
  const std::u8string bytes = std::filesystem::path(static_cast<const Native*>(path.fn_str())).u8string();
  return {bytes.begin(), bytes.end()};
}

wxString file_filter(const std::string& types) {
  std::string patterns;
  for (const std::string_view type : split(types, ";")) patterns.append(file_pattern(std::string(type))).append(";");
  patterns.pop_back();
  return to_wx("Supported Types|" + patterns + "|All Files|") + wxALL_FILES_PATTERN;
}

}  // namespace quorvel::ui
