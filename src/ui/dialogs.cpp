#include "ui/dialogs.h"

#include <wx/artprov.h>
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
  auto* const box = new wxTextCtrl(parent, wxID_ANY, wxString(), wxDefaultPosition, scaled(*parent, size), style,
                                   wxDefaultValidator, name);
  if (box->IsSingleLine()) fit_letters(*box);
  return box;
}

/// A read-only box for a path, in two columns with its label.
wxTextCtrl* path_box(wxWindow* parent, wxSizer& rows, wxStaticText* label, const char* name, int width) {
  rows.Add(label, wxSizerFlags().CenterVertical());
  wxTextCtrl* const box = text_box(parent, name, wxSize(width, -1), wxTE_READONLY);
  rows.Add(box, wxSizerFlags().Expand());
  return box;
}

void show_path(wxTextCtrl& box, const std::string& path) {
  box.ChangeValue(to_wx(path));
  // The end, where the file's name stands, is what the user wants to see.
  box.SetInsertionPointEnd();
  box.ShowPosition(box.GetLastPosition());
  box.SetToolTip(to_wx(path));
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
  parent->IsShown() ? CentreOnParent() : CentreOnScreen();
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
        show_path(*source_, question.source);
        show_path(*destination_, question.destination);
      }) {
  auto* const text = new wxStaticText(this, wxID_ANY, to_wx(question.question));
  auto* const paths = new wxFlexGridSizer(2, scaled(*this, wxSize(8, 8)));
  paths->AddGrowableCol(1);
  source_ = path_box(this, *paths, new wxStaticText(this, wxID_ANY, "&From:"), "source", 460);
  destination_ = path_box(this, *paths, new wxStaticText(this, wxID_ANY, "&To:"), "destination", 460);
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
  const std::string name = session_.queue.holds(index_) ? session_.queue.at(index_).search_name : "";
  detected_name_->ChangeValue(to_wx(name));
  detected_name_->SetEditable(name.empty());  // no name was recognised, or there is no item
  (name.empty() ? detected_name_ : new_name_)->SetFocus();
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

ItemInfoDialog::ItemInfoDialog(wxWindow* parent, const Session& session, Launcher& launcher)
    : wxDialog(parent, wxID_ANY, "Item Info"),
      session_(session),
      launcher_(launcher),
      first_tick_(*this, [this] { fill(); }) {
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
  auto* const paths = new wxFlexGridSizer(2, scaled(*this, wxSize(8, 8)));
  paths->AddGrowableCol(1);
  old_path_ = path_box(this, *paths, new wxStaticText(this, wxID_ANY, "Ol&d Path:"), "old_path", line_width);
  new_path_label_ = new wxStaticText(this, wxID_ANY, "&New Path:");
  new_path_ = path_box(this, *paths, new_path_label_, "new_path", line_width);
  sizer->Add(paths, line);
  description_ = text_box(this, "description", wxSize(-1, 110), wxTE_MULTILINE | wxTE_READONLY);
  add_links();
  sizer->Add(description_, wxSizerFlags(line).Proportion(1));
  sizer->Add(links_, wxSizerFlags(line).Proportion(1));
  auto* const folder = new wxButton(this, wxID_ANY, "Open &Folder");
  folder->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { open_folder(); });
  sizer->Add(button_row(*this, OnlyOk, folder), line);
  SetSizerAndFit(sizer);
  CentreOnParent();
}

void ItemInfoDialog::add_links() {
  links_ = new wxPanel(this, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, "links");
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  show_link_ = link(links_, "Show page on tvmaze.com", "show_link",
                    [this] { open_page(launcher_, session_.ports.ui, info_.show_address); });
  episode_link_ = link(links_, "Episode page on tvmaze.com", "episode_link",
                       [this] { open_page(launcher_, session_.ports.ui, info_.episode_address); });
  for (wxHyperlinkCtrl* const made : {show_link_, episode_link_}) sizer->Add(made);
  links_->SetSizer(sizer);
  links_->Hide();
}

void ItemInfoDialog::fill() {
  if (!session_.queue.holds(index_)) return;
  info_ = item_info(session_.queue.at(index_), session_.ports.clock);
  const bool is_done = !info_.new_name.empty();
  const auto show_fitted = [this](wxStaticText* label, const std::string& text) {
    const wxString whole = to_wx(text);
    const auto measure = [label](const std::string& part) { return label->GetTextExtent(to_wx(part)).x; };
    label->SetLabelText(to_wx(fitted(from_wx(whole), scaled(*this, line_width), measure)));
    label->SetToolTip(whole);
  };
  show_fitted(filename_, info_.filename);
  status_->SetLabelText(to_wx(info_.status));
  if (is_done) show_fitted(new_name_, info_.new_name);
  new_name_->Show(is_done);
  show_path(*old_path_, info_.old_path);
  show_path(*new_path_, info_.new_path);
  for (wxWindow* const window : {static_cast<wxWindow*>(new_path_label_), static_cast<wxWindow*>(new_path_)}) {
    window->Show(!info_.new_path.empty());
  }
  description_->ChangeValue(to_wx(info_.description));
  description_->Show(!is_done || !info_.description.empty());
  links_->Show(is_done);
  GetSizer()->GetItem(links_)->SetProportion(description_->IsShown() ? 0 : 1);
  show_link_->Show(!info_.show_address.empty());
  episode_link_->Show(!info_.episode_address.empty());
  wxSize size = GetClientSize();
  size.IncTo(GetSizer()->CalcMin());  // it was made for less
  SetClientSize(size);
  Layout();
}

void ItemInfoDialog::open_folder() {
  if (!session_.queue.holds(index_)) return;
  quorvel::open_folder(launcher_, session_.ports.ui, session_.ports.files,
                       folder_of(session_.queue.at(index_), session_.ports.files));
}

}  // namespace quorvel::ui
