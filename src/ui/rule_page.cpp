#include "ui/rule_page.h"

#include <wx/sizer.h>

namespace quorvel::ui {

RulePage::RulePage(wxWindow* parent, const Looks& looks, Actions actions)
    : wxPanel(parent), actions_(std::move(actions)), list_(new PlainList(this, looks.list, looks.shares)) {
  auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
  const auto button = [&](const char* label, const char* name, const std::function<void()>& press,
                          const wxSizerFlags& flags = {}) {
    auto* const made =
        new wxButton(this, wxID_ANY, label, wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, name);
    made->Bind(wxEVT_BUTTON, [press](wxCommandEvent&) { press(); });
    buttons->Add(made, flags);
  };
  button("Move &Up", looks.up, [this] { move(-1); });
  button(
      "Move &Down", looks.down, [this] { move(1); }, wxSizerFlags().Border(wxLEFT));
  buttons->AddStretchSpacer();
  button("&Add New", looks.add, actions_.add);
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(list_, wxSizerFlags(1).Expand().Border());
  sizer->Add(buttons, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM));
  SetSizer(sizer);

  list_->Bind(wxEVT_CONTEXT_MENU,
              [this, &on_rule = looks.on_rule, &on_empty_area = looks.on_empty_area](const wxContextMenuEvent& event) {
                wxPoint at;
                const int row = list_->menu_row(event, at);
                if (row > 0) list_->select(row);
                actions_.pop_up(*list_, row > 0 ? on_rule : on_empty_area, at);
              });
  list_->Bind(wxEVT_CHAR_HOOK, &RulePage::on_key, this);
  if (actions_.edit) list_->on_activate = actions_.edit;
}

void RulePage::on_key(wxKeyEvent& event) {
  if (event.GetKeyCode() == WXK_F2 && actions_.edit && list_->selected() > 0) {
    edit();
  } else if (event.GetKeyCode() == WXK_DELETE) {
    remove();
  } else {
    event.Skip();
  }
}

void RulePage::edit() {
  actions_.edit(list_->selected());
}

void RulePage::remove() {
  const int index = list_->selected();
  if (index < 1) return;
  if (!actions_.remove(index)) actions_.not_saved("remove");
  list_->select(index);
}

void RulePage::move(int by) {
  const int index = list_->selected(), other = index + by;
  if (index < 1 || other < 1 || other > list_->count()) return;
  const bool moved = actions_.exchange(index, other);
  list_->select(moved ? other : index);
  if (!moved) actions_.not_saved("move");
}

}  // namespace quorvel::ui
