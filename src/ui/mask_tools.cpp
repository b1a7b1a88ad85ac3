#include "ui/mask_tools.h"

#include <wx/button.h>
#include <wx/sizer.h>

#include <utility>

#include "ui/text.h"

namespace quorvel::ui {
namespace {

constexpr int first_id = wxID_HIGHEST + 1000;

constexpr std::pair<TokenKind, const char*> submenus[] = {{TokenKind::Show, "Of the Show"},
                                                          {TokenKind::Episode, "Of the Episode"},
                                                          {TokenKind::FileName, "Of the File's Name"}};

/// Gives each entry a letter of its own to be chosen by, the first that none before it has.
void give_letters(const wxMenu& menu) {
  wxString taken;
  for (wxMenuItem* const item : menu.GetMenuItems()) {
    wxString label = item->GetItemLabelText();
    for (std::size_t at = 0; at < label.length(); ++at) {
      const wxString letter = label.Mid(at, 1).Upper();
      if (letter < "A" || letter > "Z" || taken.Contains(letter)) continue;
      taken += letter;
      item->SetItemLabel(label.insert(at, "&"));
      break;
    }
    if (item->IsSubMenu()) give_letters(*item->GetSubMenu());
  }
}

}  // namespace

MaskTools::MaskTools(wxTextCtrl& box, bool in_folder, CallStack& stack, std::function<void(const Preset&)> on_preset)
    : wxPanel(box.GetParent()), box_(box), in_folder_(in_folder), on_preset_(std::move(on_preset)) {
  SetSizer(new wxBoxSizer(wxHORIZONTAL));
  add_button("&Insert...", in_folder ? "path_tokens" : "mask_tokens", &MaskTools::fill_tokens, stack);
  add_button("Pre&set...", in_folder ? "path_presets" : "mask_presets", &MaskTools::fill_presets, stack);
}

void MaskTools::add_button(const char* label, const char* name, void (MaskTools::*fill)(wxMenu&), CallStack& stack) {
  auto* const button =
      new wxButton(this, wxID_ANY, label, wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, name);
  GetSizer()->Add(button, wxSizerFlags().Border(wxRIGHT));
  button->Bind(wxEVT_BUTTON, [this, button, fill, &stack](wxCommandEvent&) {
    wxMenu menu;
    choices_.clear();
    (this->*fill)(menu);
    give_letters(menu);
    chosen_ = choices_.size();
    stack.pop_up(*button, menu, wxPoint(0, button->GetSize().y));
    if (chosen_ < choices_.size()) choices_[chosen_]();  // only now, for it may open a dialog
  });
  button->Bind(wxEVT_MENU,
               [this](wxCommandEvent& event) { chosen_ = static_cast<std::size_t>(event.GetId() - first_id); });
}

void MaskTools::add(wxMenu& menu, const wxString& label, const std::function<void()>& choose) {
  menu.Append(first_id + static_cast<int>(choices_.size()), label);
  choices_.push_back(choose);
}

void MaskTools::add_tokens(wxMenu& menu, TokenKind kind) {
  for (const Token& token : tokens) {
    if (token.kind != kind || (in_folder_ && !token.in_folder)) continue;
    add(menu, to_wx(token.text) + "  " + to_wx(token.meaning), [this, &token] { insert(token); });
  }
}

void MaskTools::fill_tokens(wxMenu& menu) {
  add_tokens(menu, TokenKind::Always);
  menu.AppendSeparator();
  for (const auto& [kind, label] : submenus) {
    auto* const submenu = new wxMenu;
    add_tokens(*submenu, kind);
    menu.AppendSubMenu(submenu, label);
  }
  menu.AppendSeparator();
  add(menu, "{ }  what is there only when its tokens have a value", [this] { insert_braces(); });
}

void MaskTools::fill_presets(wxMenu& menu) {
  for (const Preset& preset : presets) {
    add(menu, to_wx(preset.title), [this, &preset] { on_preset_(preset); });
  }
}

/// Behind what is selected, for the keyboard's way to the button may have selected all.
void MaskTools::insert(const Token& token) {
  long from = 0, to = 0;
  box_.GetSelection(&from, &to);
  box_.SetInsertionPoint(to);
  box_.WriteText(to_wx(token.text));
  go_on_at(to + static_cast<long>(token.text.size()));
}

/// Around what is selected.
void MaskTools::insert_braces() {
  long from = 0, to = 0;
  box_.GetSelection(&from, &to);
  box_.SetInsertionPoint(to);
  box_.WriteText("}");
  box_.SetInsertionPoint(from);
  box_.WriteText("{");
  go_on_at(to + 1);
}

void MaskTools::go_on_at(long place) {
  box_.SetFocus();
  box_.SetInsertionPoint(place);  // rather than all of it selected
}

}  // namespace quorvel::ui
