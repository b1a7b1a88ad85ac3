#pragma once

#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/statbmp.h>
#include <wx/stattext.h>

#include <string>
#include <utility>

#include "queue/rule_preview.h"

namespace quorvel::ui {

/// Room for two lines of a text.
wxStaticText* note(wxWindow* parent, const char* name);
/// Shows the text there in lines of this width.
void show_note(wxStaticText& note, const std::string& text, int width);

/// Lines of labels and values.
wxFlexGridSizer* line_grid(const wxWindow& window);
/// Adds a line; its label and its value. What is too long for it has "..." in its middle rather than widen the dialog.
std::pair<wxStaticText*, wxStaticText*> add_line(wxFlexGridSizer& grid, wxWindow* parent, const char* label,
                                                 const char* name);
void show_value(wxStaticText& value, const std::string& text);

/// What a rule makes of a file, and the first of the remarks on that.
class PreviewPanel : public wxPanel {
 public:
  explicit PreviewPanel(wxWindow* parent);

  void show(const RulePreview& preview, bool has_folder);

 private:
  wxStaticText *file_label_, *folder_label_, *file_, *name_, *folder_, *remark_;
  wxStaticBitmap* sign_;
  std::string said_;
};

}  // namespace quorvel::ui
