#pragma once

#include <wx/button.h>
#include <wx/checkbox.h>
#include <wx/dialog.h>
#include <wx/hyperlink.h>
#include <wx/panel.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/timer.h>

#include <functional>
#include <optional>
#include <string>

#include "platform/launcher.h"
#include "platform/user_interface.h"
#include "shell/dialogs.h"
#include "shell/session.h"

/// The small dialogs. What they say and decide is the core's.
namespace quorvel::ui {

/// Fills a dialog a moment after it has been shown: by then it is laid out, and texts can be measured and scrolled.
class FirstTick : public wxTimer {
 public:
  FirstTick(wxDialog& dialog, std::function<void()> fill);
  void Notify() override { fill_(); }

 private:
  const std::function<void()> fill_;
};

/// The program's own message, which may carry a box to switch it off for good.
class MessageDialog : public wxDialog {
 public:
  /// `id` below 1: no box. "#" in `text` is a line break.
  MessageDialog(wxWindow* parent, int id, const std::string& title, const std::string& text, MessageIcon icon);

  /// Whether the user has ticked the box.
  bool is_unwanted() const { return skip_->IsShown() && skip_->IsChecked(); }

 private:
  wxCheckBox* skip_;
};

class AboutBox : public wxDialog {
 public:
  /// `address` is shown and `open_website` opens it; a key press writes `socket_version` to the log.
  AboutBox(wxWindow* parent, Log& log, const std::string& address, const std::function<void()>& open_website,
           const std::string& socket_version);
};

/// Asks for the user's word before a file operation.
class ConfirmDialog : public wxDialog {
 public:
  ConfirmDialog(wxWindow* parent, Session& session, const ConfirmationQuestion& question);

  /// Empty when the dialog was closed by neither of its buttons.
  std::optional<bool> answer() const { return answer_; }

 private:
  void on_skip(const wxCommandEvent& event);

  Session& session_;
  std::optional<bool> answer_;
  wxTextCtrl *source_ = nullptr, *destination_ = nullptr;
  FirstTick first_tick_;
};

/// Adds an exception: what to search for in place of a show name that file names give.
class ExceptionDialog : public wxDialog {
 public:
  ExceptionDialog(wxWindow* parent, Session& session);

  /// The queue's item whose name is to be replaced; 0 when the user types that too.
  void setQID(int index) { index_ = index; }

 private:
  void fill();
  void on_ok();

  Session& session_;
  int index_ = 0;
  wxTextCtrl *detected_name_ = nullptr, *new_name_ = nullptr;
  FirstTick first_tick_;
};

/// Shows what became of one item of the queue, and where its file was and is.
class ItemInfoDialog : public wxDialog {
 public:
  ItemInfoDialog(wxWindow* parent, const Session& session, Launcher& launcher);

  /// The item to show.
  void setQID(int index) { index_ = index; }

 private:
  void add_links();
  void fill();
  void open_folder();

  const Session& session_;
  Launcher& launcher_;
  int index_ = 0;
  ItemInfo info_;
  wxStaticText *filename_ = nullptr, *status_ = nullptr, *new_name_ = nullptr, *new_path_label_ = nullptr;
  wxTextCtrl *old_path_ = nullptr, *new_path_ = nullptr, *description_ = nullptr;
  wxPanel* links_ = nullptr;
  wxHyperlinkCtrl *show_link_ = nullptr, *episode_link_ = nullptr;
  FirstTick first_tick_;
};

}  // namespace quorvel::ui
