#pragma once

#include <gtest/gtest.h>
#include <wx/app.h>
#include <wx/modalhook.h>
#include <wx/wx.h>

#include <deque>
#include <filesystem>
#include <optional>

#include "fake_ports.h"
#include "file_tools.h"
#include "listings_service.h"
#include "platform/launcher.h"
#include "platform/system.h"
#include "shell/startup.h"
#include "temporary_folder.h"
#include "ui/main_frame.h"

/// The real window, with real files and rules in a folder of its own, and the stand-in service behind it.
namespace quorvel::testing {

/// A file name that gives trouble to whoever takes the system's names for text, and what is seen of it.
struct OddName {
  std::string bytes, shown;
};
/// What brings up a control's menu.
struct MenuKey {
  int code, modifiers;
};
#ifdef _WIN32
inline const OddName odd_name{"caf\u00E9 \U0001F600", "caf\u00E9 \U0001F600"};  // no code page holds it
inline constexpr MenuKey menu_key{WXK_WINDOWS_MENU, 0};  // Wine goes on to the menu bar after Shift+F10
#else
inline const OddName odd_name{"caf\xE9", "caf\\351"};     // not UTF-8
inline constexpr MenuKey menu_key{WXK_F10, wxMOD_SHIFT};  // the display's keyboard has no menu key
#endif

/// Lets events run until `done`; fails after half a minute.
void wait_until(const std::function<bool()>& done);

class Recorder : public Launcher, public ContextMenu, public InstanceChannel {
 public:
  std::vector<std::string> calls;
  std::function<void(const std::string&)> handle;

  bool open(const std::string& target) override { return calls.push_back("open " + target), true; }
  bool start(const std::string& program, const std::string& argument) override {
    return calls.push_back("start " + program + " " + argument), true;
  }
  void install(const std::string& extension) override { calls.push_back("install " + extension); }
  void remove(const std::string& extension) override { calls.push_back("remove " + extension); }
  bool other_is_running() override { return false; }
  void send(const std::string&) override {}
  void receive(std::function<void(const std::string&)> take) override { handle = std::move(take); }
  void stop() override { handle = {}; }
};

class TestWindow : public ::testing::Test, private wxModalDialogHook {
 protected:
  TestWindow();
  ~TestWindow() override;

  /// Starts the session and shows the window; settings and rule files are to be in place.
  void start();

  /// What is done with the next dialog, in its own event loop; it must close the dialog. One that nobody waits for is
  /// a failure.
  void on_dialog(std::function<void(wxDialog&)> drive) { drives_.push_back(std::move(drive)); }
  /// The dialog is to have this title, and is closed by this button.
  void on_dialog(const std::string& title, const std::string& button);
  /// Closes a dialog by its "Cancel", the system's own ones too.
  static void cancel(wxDialog& dialog);
  bool all_dialogs_came() const { return drives_.empty(); }

  void command(int id);
  /// Shows a tab, counted from 1, and gives its list.
  ui::RuleList& rules(std::size_t tab);
  /// The entries of the menu that a right click on a row of the tab's list brings up, joined by "|", or one on the
  /// empty area for row 0; empty when none comes.
  std::string menu_over(std::size_t tab, int row);
  /// Brings up the queue's menu by key, for the selected item, and leaves it at that.
  void choose_selected_item();
  /// A double-click on an item of the queue.
  void open_item(int index);
  /// Runs while the pass that is started next lets events run.
  void in_the_pass(const std::function<void()>& action);
  void wait_for_the_end();
  /// One rule that copies or moves below that folder.
  void rule(int action, const std::string& to);
  std::size_t files_in(const char* name) const;
  /// Gives the keyboard to a control.
  void focus(const char* name);
  std::string file(const std::string& name, const std::string& contents = "x");  // below folder/in, made; its path
  /// Of something in the folder, as the core knows it.
  std::string path(const std::string& below) const;
  bool exists(const std::string& name) const { return std::filesystem::exists(folder / name); }
  std::string cell(const char* list, int row, int column) const;
  std::string log() const;
  void drop(const std::vector<std::string>& paths);
  bool idle() const { return !session->processor.queue_busy(); }
  bool is_done(int item) const { return session->queue.at(item).state == QueueState::Done; }
  /// All that was dropped goes through a pass, at once.
  void run_pass() { command(ui::mnuRetry); }

  const TemporaryFolder temporary;
  const std::filesystem::path folder = path_of(temporary.path());
  ListingsService service;
  FakeKeyValues store;
  Recorder recorder;
  std::unique_ptr<Files> files = system_files();
  std::unique_ptr<SocketControl> socket = system_socket();
  std::unique_ptr<Clock> clock = system_clock();
  ui::MainFrame* frame = nullptr;  // null when it has gone
  int progress_reports = 0;
  std::function<void()> on_progress = [] {};
  std::unique_ptr<FileOperation> shell;
  std::optional<Session> session;
  std::optional<Startup> startup;

 private:
  int Enter(wxDialog* dialog) override;
  void Exit(wxDialog*) override { entered_ = nullptr; }

  std::deque<std::function<void(wxDialog&)>> drives_;
  wxDialog* entered_ = nullptr;
};

/// The control below `parent` that has this name or, without mnemonics, this label; a failure when there is none.
wxWindow* named(const wxWindow& parent, const std::string& name);
template <typename T>
T& find(const wxWindow& parent, const std::string& name) {
  T* const found = dynamic_cast<T*>(named(parent, name));
  if (found == nullptr) throw std::runtime_error("no control " + name);
  return *found;
}
std::string label(const wxWindow& parent, const std::string& name);
std::string text(const wxWindow& parent, const std::string& name);
void set_text(const wxWindow& parent, const std::string& name, const std::string& text);
void press(const wxWindow& parent, const std::string& button);
std::string captions(const wxMenu& menu);
int count(const std::string& text, const std::string& what);
void click(const wxWindow& parent, const std::string& link);
void type(const wxWindow& dialog, int key, bool control);
void tick(const wxWindow& parent, const std::string& box, bool on = true);

}  // namespace quorvel::testing
