#pragma once

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/modalhook.h>
#include <wx/weakref.h>
#include <wx/wx.h>

#include <deque>

#include "session_fixture.h"
#include "ui/main_frame.h"

/// The real window, with real files and rules in a folder of its own, and a listings service in memory.
namespace quorvel::testing {

/// Lets events run until `done`; fails after half a minute.
void wait_until(const std::function<bool()>& done);

class TestWindow : public ::testing::Test, protected TestPorts, private wxModalDialogHook {
 protected:
  TestWindow();
  ~TestWindow() override;

  /// Starts the session and shows the window; settings and rule files are to be in place.
  void start();
  void wait_for_the_end();

  /// What is done with the next dialog, in its own event loop; it must close the dialog. One that nobody waits for is
  /// a failure.
  void on_dialog(std::function<void(wxDialog&)> drive) { drives_.push_back(std::move(drive)); }
  /// The dialog is to have this title, and is closed by this button.
  void on_dialog(const std::string& title, const char* button);
  bool all_dialogs_came() const { return drives_.empty(); }

  void command(int id);
  /// All that was dropped goes through a pass, at once.
  void run_pass() { command(ui::mnuRetry); }
  /// Shows a tab, counted from 1, and gives its list, `ListViewN`.
  ui::RowList& list(std::size_t tab) const;
  /// The cells of all its rows, "|" between them and ";" after each row.
  std::string rows(std::size_t tab) const;
  /// The entries of the menu that a right click on a row of the list brings up, one on the empty area for row 0, the
  /// menu key for row -1, or one on the titles for row -2.
  std::string menu_over(std::size_t tab, int row);
  void drop(const std::vector<std::string>& paths) const;
  /// Makes a file below "in"; its path.
  std::string file(const std::string& name, const std::string& bytes = "x") const;
  bool is_done(int item) const { return session->queue.at(item).state == QueueState::Done; }
  /// How many lines of the log end so.
  std::ptrdiff_t logged(const std::string& end) const;

  wxWeakRef<ui::MainFrame> frame;  // null when it has gone
  std::function<void()> on_progress = [] {};
  std::optional<Session> session;
  std::optional<Startup> startup;

 private:
  int Enter(wxDialog* dialog) override;
  void Exit(wxDialog*) override { entered_ = nullptr; }

  std::deque<std::function<void(wxDialog&)>> drives_;
  wxDialog* entered_ = nullptr;
};

/// The control below `parent` that has this name or this label, as the source has it.
template <typename T = wxWindow>
T& find(const wxWindow& parent, const char* name) {
  T* const found = dynamic_cast<T*>(wxWindow::FindWindowByName(name, &parent));
  if (found == nullptr) throw std::runtime_error(std::string("no control ") + name);
  return *found;
}
/// All that is seen in a window: a dialog's title, the labels, "[text]", "<choice>", "x" or "o" before what can be
/// ticked, "-" before what is disabled, and the titles of a list's columns; "|" after each.
std::string shown(const wxWindow& parent);
void set_text(const wxWindow& parent, const char* name, const char* text);
void press(const wxWindow& parent, const char* button);
void tick(const wxWindow& parent, const char* box, bool on = true);
/// As if the user had used the control, or an entry of its menu: sends it this event, with the value that it has then.
void use(wxWindow& control, wxEventType event, int value = 0, int id = wxID_NONE);
void type(const wxWindow& dialog, int key, bool control);
std::string captions(const wxMenu& menu);
/// Closes a dialog by its "Cancel", the system's own ones too.
void cancel(wxDialog& dialog);

}  // namespace quorvel::testing
