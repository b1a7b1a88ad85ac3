#include "ui/cell_editor.h"

#include <wx/sizer.h>

#include "text/restored.h"
#include "ui/desktop.h"
#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {

CellEditor::CellEditor(wxWindow* parent, wxWindow& neighbour)
    // A window of its own, over the neighbour's: that one paints its whole area.
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE | wxTAB_TRAVERSAL, "cell_editor"),
      neighbour_(neighbour),
      text_(new wxTextCtrl(this, wxID_ANY, wxString(), wxDefaultPosition, wxDefaultSize, wxTE_PROCESS_ENTER,
                           wxDefaultValidator, "cell_text")) {
  fit_letters(*text_);
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(text_, wxSizerFlags(1).Expand());
  SetSizer(sizer);
  Hide();
  text_->Bind(wxEVT_TEXT_ENTER, [this](wxCommandEvent&) { commit(); });
  text_->Bind(wxEVT_CHAR_HOOK, &CellEditor::on_key, this);
  text_->Bind(wxEVT_KILL_FOCUS, [this](wxFocusEvent& event) {
    event.Skip();
    CallAfter([this] {
      if (!text_->HasFocus()) commit();
    });
  });
}

void CellEditor::open(const wxRect& area, const std::string& text, const char* spoken_name,
                      std::function<bool(const std::string&)> accept) {
  accept_ = std::move(accept);
  original_ = text;
  set_spoken_name(*text_, spoken_name);
  text_->ChangeValue(to_wx(text));
  move(area);
  Show();
  Raise();
  text_->SetFocus();
  text_->SelectAll();
}

void CellEditor::move(const wxRect& area) {
  if (area.IsEmpty()) return;
  const int height = std::max(area.height, text_->GetMinSize().y);
  const wxRect wanted(area.x, area.y - (height - area.height) / 2, area.width, height);
  if (wanted == GetRect()) return;
  SetSize(wanted);
  Layout();
}

bool CellEditor::commit() {
  if (!is_open()) return true;
  if (is_committing_) return false;  // what that leads to lets events run
  const Restored<bool> committing(is_committing_, true);
  if (!accept_(from_wx(text_->GetValue()))) return false;
  close();
  return true;
}

void CellEditor::close() {
  if (!is_open()) return;
  const bool has_focus = text_->HasFocus();
  Hide();
  if (has_focus) neighbour_.SetFocus();
}

void CellEditor::on_key(wxKeyEvent& event) {
  if (event.GetKeyCode() == WXK_ESCAPE) return close();
  if (event.GetKeyCode() == 'Z' && event.GetModifiers() == wxMOD_CONTROL) {
    // What was typed is meant, and not what the window's menu would undo.
    text_->ChangeValue(to_wx(original_));
    return text_->SelectAll();
  }
  if (event.GetKeyCode() == WXK_TAB && !commit()) return;
  event.Skip();
}

}  // namespace quorvel::ui
