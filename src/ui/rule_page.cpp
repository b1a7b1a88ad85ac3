#include "ui/rule_page.h"

#include <wx/sizer.h>

namespace quorvel::ui {
namespace {

wxButton* button(wxWindow* parent, const wxString& label, const char* name) {
  return new wxButton(parent, wxID_ANY, label, wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator, name);
}

}  // namespace

RulePage::RulePage(wxWindow* parent, const Names& names, std::vector<RuleColumn> columns)
    : panel(new wxPanel(parent)),
      list(new RuleList(panel, names.list, std::move(columns))),
      up(button(panel, "Move &Up", names.up)),
      down(button(panel, "Move &Down", names.down)),
      add(button(panel, "&Add New", names.add)) {
  auto* const buttons = new wxBoxSizer(wxHORIZONTAL);
  buttons->Add(up);
  buttons->Add(down, wxSizerFlags().Border(wxLEFT));
  buttons->AddStretchSpacer();
  buttons->Add(add);
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(list, wxSizerFlags(1).Expand().Border());
  sizer->Add(buttons, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM));
  panel->SetSizer(sizer);
}

}  // namespace quorvel::ui
