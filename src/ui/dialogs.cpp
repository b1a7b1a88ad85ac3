#include "ui/dialogs.h"

#include <wx/artprov.h>
#include <wx/button.h>
#include <wx/sizer.h>
#include <wx/statbmp.h>

#include <algorithm>

#include "shell/dialogs.h"
#include "shell/version.h"
#include "text/cut.h"
#include "ui/icons.h"
#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

constexpr const char* skip_label = "&Don't show this again";
constexpr int line_width = 313;

enum Buttons { OnlyOk, OkAndCancel };

/// The row of buttons at a dialog's lower right, with `left` at its left. Enter is "OK" and, where it is alone, Escape
/// as well.
wxSizer* button_row(wxDialog& dialog, Buttons which, wxWindow* left = nullptr) {
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  if (left != nullptr) row->Add(left, wxSizerFlags().CenterVertical());
  row->AddStretchSpacer();
  auto* const ok = new wxButton(&dialog, wxID_OK, "OK");
  row->Add(ok);
  if (which == OkAndCancel) {
    row->Add(new wxButton(&dialog, wxID_CANCEL, "Cancel"), wxSizerFlags().Border(wxLEFT));
  } else {
    dialog.SetEscapeId(wxID_OK);
  }
  ok->SetDefault();
  ok->SetFocus();
  return row;
}

wxTextCtrl* text_box(wxWindow* parent, const char* name, const wxSize& size, long style = 0) {
  return new wxTextCtrl(parent, wxID_ANY, wxString(), wxDefaultPosition, scaled(*parent, size), style,
                        wxDefaultValidator, name);
}

wxHyperlinkCtrl* link(wxWindow* parent, const wxString& label, const char* name, const std::function<void()>& click) {
  auto* const made = new wxHyperlinkCtrl(parent, wxID_ANY, label, label, wxDefaultPosition, wxDefaultSize,
                                         wxHL_DEFAULT_STYLE & ~wxHL_CONTEXTMENU, name);
  made->SetCursor(wxCursor(wxCURSOR_HAND));
  made->Bind(wxEVT_HYPERLINK, [click](wxHyperlinkEvent&) { click(); });
  return made;
}

wxArtID art(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::Error:
      return wxART_ERROR;
    case MessageIcon::Question:
      return wxART_QUESTION;
    case MessageIcon::Warning:
      return wxART_WARNING;
    case MessageIcon::Information:
      break;
  }
  return wxART_INFORMATION;
}

/// Text that can be read, scrolled and copied, but looks like the dialog's own.
wxTextCtrl* text_area(wxWindow* parent, const std::string& text) {
  const std::string lines = message_lines(text);
  auto* const area = new wxTextCtrl(parent, wxID_ANY, to_wx(lines), wxDefaultPosition, wxDefaultSize,
                                    wxTE_MULTILINE | wxTE_READONLY | wxTE_NO_VSCROLL | wxBORDER_NONE);
  area->SetBackgroundColour(parent->GetBackgroundColour());
  const int width = scaled(*parent, 360);
  const int line_height = area->GetCharHeight() + scaled(*parent, 3);
  int count = 0;
  for (const std::string_view line : split(lines, "\n")) count += 1 + area->GetTextExtent(to_wx(line)).x / width;
  area->SetMinSize(wxSize(width, line_height * std::clamp(count + 1, 2, 15)));
  return area;
}

}  // namespace

FirstTick::FirstTick(wxDialog& dialog, std::function<void()> fill) : fill_(std::move(fill)) {
  dialog.Bind(wxEVT_INIT_DIALOG, [this](wxInitDialogEvent& event) {
    event.Skip();
    StartOnce(1);
  });
}

MessageDialog::MessageDialog(wxWindow* parent, int id, const std::string& title, const std::string& text,
                             MessageIcon icon)
    : wxDialog(parent, wxID_ANY, to_wx(title)) {
  auto* const message = new wxBoxSizer(wxHORIZONTAL);
  message->Add(new wxStaticBitmap(this, wxID_ANY, wxArtProvider::GetBitmapBundle(art(icon), wxART_MESSAGE_BOX)),
               wxSizerFlags().Border(wxRIGHT, scaled(*this, 12)));
  message->Add(text_area(this, text), wxSizerFlags(1).Expand());
  skip_ = new wxCheckBox(this, wxID_ANY, skip_label);
  skip_->Show(id >= 1);
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(message, wxSizerFlags(1).Expand().Border(wxALL, scaled(*this, 12)));
  sizer->Add(button_row(*this, OnlyOk, skip_),
             wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, scaled(*this, 12)));
  SetSizerAndFit(sizer);
  CentreOnParent();
}

AboutBox::AboutBox(wxWindow* parent, Log& log, const std::string& address, const std::function<void()>& open_website,
                   const std::string& socket_version)
    : wxDialog(parent, wxID_ANY, std::string("About ") + application_title) {
  auto* const title = new wxStaticText(this, wxID_ANY, application_title);
  title->SetFont(title->GetFont().Bold().Scaled(1.4F));
  const wxString version = wxString::Format("Version %s  Build %d", short_version, revision);
  auto* const texts = new wxBoxSizer(wxVERTICAL);
  texts->Add(title, wxSizerFlags().Border(wxBOTTOM));
  texts->Add(new wxStaticText(this, wxID_ANY, version), wxSizerFlags().Border(wxBOTTOM));
  texts->Add(new wxStaticText(this, wxID_ANY, to_wx(copyright)), wxSizerFlags().Border(wxBOTTOM));
  texts->Add(link(this, to_wx(address), "website", open_website));
  auto* const top = new wxBoxSizer(wxHORIZONTAL);
  top->Add(new wxStaticBitmap(this, wxID_ANY, icons::about(*this)), wxSizerFlags().Border(wxRIGHT, scaled(*this, 16)));
  top->Add(texts, wxSizerFlags(1));
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(top, wxSizerFlags(1).Expand().Border(wxALL, scaled(*this, 16)));
  sizer->Add(button_row(*this, OnlyOk), wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, scaled(*this, 12)));
  SetSizerAndFit(sizer);
  CentreOnParent();
  Bind(wxEVT_CHAR_HOOK, [&log, socket_version](wxKeyEvent& event) {
    event.Skip();
    log.debug_log("Using SocketWrench " + socket_version, LogLevel::Normal);
  });
}

ConfirmDialog::ConfirmDialog(wxWindow* parent, Session& session, const ConfirmationQuestion& question)
    : wxDialog(parent, wxID_ANY, to_wx(question.title)), session_(session), first_tick_(*this, [this, question] {
        // The end of a path, where the file's name stands, is what the user wants to see.
        for (const auto& [box, path] : {std::pair(source_, question.source), {destination_, question.destination}}) {
          box->ChangeValue(to_wx(path));
          box->SetInsertionPointEnd();
          box->ShowPosition(box->GetLastPosition());
          box->SetToolTip(to_wx(path));
        }
      }) {
  auto* const text = new wxStaticText(this, wxID_ANY, to_wx(question.question));
  auto* const paths = new wxFlexGridSizer(2, scaled(*this, wxSize(8, 8)));
  paths->AddGrowableCol(1);
  const auto path = [&](const char* label, const char* name) {
    paths->Add(new wxStaticText(this, wxID_ANY, label), wxSizerFlags().CenterVertical());
    wxTextCtrl* const box = text_box(this, name, wxSize(460, -1), wxTE_READONLY);
    paths->Add(box, wxSizerFlags().Expand());
    return box;
  };
  source_ = path("From:", "source");
  destination_ = path("To:", "destination");
  auto* const skip = new wxCheckBox(this, wxID_ANY, skip_label);
  const wxSizerFlags part = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, scaled(*this, 12));
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->AddSpacer(scaled(*this, 12));
  sizer->Add(text, part);
  sizer->Add(paths, part);
  sizer->Add(button_row(*this, OkAndCancel, skip), part);
  SetSizerAndFit(sizer);
  CentreOnParent();

  Bind(wxEVT_BUTTON, [this](wxCommandEvent& event) {
    answer_ = event.GetId() == wxID_OK;
    if (IsModal()) EndModal(event.GetId());
  });
  skip->Bind(wxEVT_CHECKBOX, [this](const wxCommandEvent& event) { on_skip(event); });
  Bind(wxEVT_CLOSE_WINDOW, [this](wxCloseEvent&) {
    if (IsModal()) EndModal(wxID_NONE);
  });
}

void ConfirmDialog::on_skip(const wxCommandEvent& event) {
  session_.settings.confirm = !event.IsChecked();
  session_.settings_store.write_number("confirm", session_.settings.confirm ? 1 : 0);
}

ExceptionDialog::ExceptionDialog(wxWindow* parent, Session& session)
    : wxDialog(parent, wxID_ANY, "Add Exception"), session_(session), first_tick_(*this, [this] { fill(); }) {
  auto* const names = new wxFlexGridSizer(2, scaled(*this, wxSize(8, 8)));
  names->AddGrowableCol(1);
  const auto box = [&](const char* label, const char* name) {
    names->Add(new wxStaticText(this, wxID_ANY, label), wxSizerFlags().CenterVertical());
    wxTextCtrl* const text = text_box(this, name, wxSize(260, -1));
    names->Add(text, wxSizerFlags().Expand());
    return text;
  };
  detected_name_ = box("&Detected Show Name:", "detected_name");
  new_name_ = box("&New Show Name:", "new_name");
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(names, wxSizerFlags().Expand().Border(wxALL, scaled(*this, 12)));
  sizer->Add(button_row(*this, OkAndCancel),
             wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, scaled(*this, 12)));
  SetSizerAndFit(sizer);
  CentreOnParent();
  Bind(
      wxEVT_BUTTON, [this](wxCommandEvent&) { on_ok(); }, wxID_OK);
}

void ExceptionDialog::fill() {
  if (session_.queue.holds(index_)) {
    detected_name_->ChangeValue(to_wx(session_.queue.at(index_).search_name));
    detected_name_->SetEditable(false);
    new_name_->SetFocus();
  } else {
    detected_name_->ChangeValue(wxString());
    detected_name_->SetFocus();
  }
}

void ExceptionDialog::on_ok() {
  switch (add_exception(session_.exceptions, session_.ports.ui, from_wx(detected_name_->GetValue()),
                        from_wx(new_name_->GetValue()))) {
    case NewException::NoDetectedName:
      return detected_name_->SetFocus();
    case NewException::NoNewName:
      return new_name_->SetFocus();
    case NewException::NotSaved:
      return;
    case NewException::Added:
      if (IsModal()) EndModal(wxID_OK);
  }
}

ItemInfoDialog::ItemInfoDialog(wxWindow* parent, const WorkQueue& queue, Launcher& launcher, UserInterface& ui)
    : wxDialog(parent, wxID_ANY, "Item Info"), queue_(queue), launcher_(launcher), ui_(ui), first_tick_(*this, [this] {
        fill();
      }) {
  const wxSizerFlags line = wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, scaled(*this, 8));
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->AddSpacer(scaled(*this, 12));
  const auto add_line = [&](const char* name) {
    auto* const text = new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxST_NO_AUTORESIZE, name);
    text->SetMinSize(wxSize(scaled(*this, line_width + 7), text->GetCharHeight() + scaled(*this, 2)));
    sizer->Add(text, line);
    return text;
  };
  filename_ = add_line("filename");
  status_ = add_line("status");
  new_name_ = add_line("new_name");
  description_ = text_box(this, "description", wxSize(-1, 80), wxTE_MULTILINE | wxTE_READONLY);
  links_ = new wxPanel(this, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, "links");
  auto* const links = new wxBoxSizer(wxVERTICAL);
  links->Add(link(links_, "Show page on tvmaze.com", "show_link", [this] { open(queue_.at(index_).show_url); }));
  links->Add(
      link(links_, "Episode page on tvmaze.com", "episode_link", [this] { open(queue_.at(index_).episode_url); }));
  links_->SetSizer(links);
  links_->Hide();
  sizer->Add(description_, wxSizerFlags(line).Proportion(1));
  sizer->Add(links_, wxSizerFlags(line).Proportion(1));
  sizer->Add(button_row(*this, OnlyOk), line);
  SetSizerAndFit(sizer);
  CentreOnParent();
}

void ItemInfoDialog::fill() {
  if (!queue_.holds(index_)) return;
  const ItemInfo info = item_info(queue_.at(index_));
  if (info.status.empty()) return;
  const bool is_done = !info.new_name.empty();
  const auto show_fitted = [this](wxStaticText* label, const std::string& text) {
    const wxString whole = to_wx(text);
    const auto measure = [label](const std::string& part) { return label->GetTextExtent(to_wx(part)).x; };
    label->SetLabelText(to_wx(fitted(from_wx(whole), scaled(*this, line_width), measure)));
    label->SetToolTip(whole);
  };
  show_fitted(filename_, info.filename);
  status_->SetLabelText(to_wx(info.status));
  if (is_done) show_fitted(new_name_, info.new_name);
  new_name_->Show(is_done);
  description_->ChangeValue(to_wx(info.description));
  description_->Show(!is_done);
  links_->Show(is_done);
  Layout();
}

/// Addresses go to the launcher as the service gave them, in double quotes.
void ItemInfoDialog::open(const std::string& address) {
  if (launcher_.open(address)) return;
  ui_.show_message(0, "Unable to open page", "There is no program to open " + address + " with", MessageIcon::Warning);
}

}  // namespace quorvel::ui
