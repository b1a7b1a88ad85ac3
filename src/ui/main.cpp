#include <wx/app.h>
#include <wx/log.h>
#include <wx/msgdlg.h>

#include <cstdlib>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/console.h"
#include "platform/system.h"
#include "shell/session.h"
#include "shell/startup.h"
#include "shell/version.h"
#include "ui/desktop.h"
#include "ui/main_frame.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

/// The desktop program: the system's ports, the session, the window, and how they come up and go down.
class App : public wxApp {
 public:
  explicit App(CommandLine line) : line_(std::move(line)) {}

  bool Initialize(int& argc, wxChar** argv) override;
  bool OnInit() override;
  int OnRun() override { return status_ ? *status_ : wxApp::OnRun(); }
  int OnExit() override;
  bool OnExceptionInMainLoop() override;

 private:
  void build();
  void start();

  const CommandLine line_;
  std::optional<int> status_;   // how the program ends when there is nothing to run
  MainFrame* frame_ = nullptr;  // the toolkit's; gone before the session
  std::unique_ptr<Files> files_;
  std::unique_ptr<FileOperation> shell_;
  std::unique_ptr<KeyValueStore> key_values_;
  std::unique_ptr<SocketControl> socket_;
  std::unique_ptr<WebClient> web_;
  std::unique_ptr<Clock> clock_;
  std::unique_ptr<ContextMenu> context_menu_;
  std::unique_ptr<Launcher> launcher_;
  std::unique_ptr<InstanceChannel> channel_;
  std::unique_ptr<FolderWatch> folder_watch_;
  std::optional<Session> session_;
  std::optional<Startup> startup_;
};

void App::build() {
  files_ = system_files();
  shell_ = system_file_operation(
      [this](std::uint64_t done, std::uint64_t total) {
        return frame_ == nullptr || frame_->copy_progress(done, total);
      },
      [this](const std::string& path) { return frame_ != nullptr && frame_->ask_to_replace(path); });
  key_values_ = system_key_values(*files_, application_title);
  socket_ = system_socket();
  web_ = system_web_client(user_agent());
  clock_ = system_clock();
  context_menu_ = system_context_menu(*files_, program_file());
  launcher_ = system_launcher();
  channel_ = system_instance_channel(application_title, std::string(application_title) + " " + short_version);

  folder_watch_ = system_folder_watch();

  frame_ = new MainFrame;
  session_.emplace(Ports{*key_values_, *shell_, *files_, *socket_, *web_, *frame_, *clock_, context_menu_.get(),
                         folder_watch_.get()},
                   Places{.application_data = application_data_folder(*files_),
                          .program = program_folder(),
                          .work_dir = {},
                          .api_base = listings_address()});
  startup_.emplace(*session_, *frame_, *channel_);
  frame_->attach(*session_, *launcher_, [this] { startup_->unload(); });
  frame_->Bind(wxEVT_DESTROY, [this](wxWindowDestroyEvent& event) {
    if (event.GetWindow() == frame_) frame_ = nullptr;
    event.Skip();
  });
}

bool App::Initialize(int& argc, wxChar** argv) {
  const wxLogNull silence;  // the toolkit would say so in a window, which is what it cannot open
  if (wxApp::Initialize(argc, argv)) return true;
  console::write_error(
      "quorvel: there is no display to open the window on. quorvel-cli does the same work in a terminal.\n");
  return false;
}

bool App::OnInit() {
  SetAppName(application_title);
  // What the toolkit has to say goes where developers look; users get messages of the program's own.
  delete wxLog::SetActiveTarget(new wxLogStderr);  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): it is the log's
  try {
    start();
  } catch (const std::exception& failure) {
    wxMessageBox(to_wx(failure.what()), application_title, wxOK | wxICON_ERROR);
    status_ = EXIT_FAILURE;
  }
  return true;
}

void App::start() {
  build();
  const StartResult result = startup_->run(line_);
  if (result == StartResult::Running) return;
  status_ = result == StartResult::Ended ? EXIT_SUCCESS : EXIT_FAILURE;
  delete frame_;
}

int App::OnExit() {
  startup_.reset();
  session_.reset();
  return wxApp::OnExit();
}

bool App::OnExceptionInMainLoop() {
  try {
    throw;
  } catch (const ProgramEnd&) {
    // At once means that a pass further down the stack does not go on either.
    if (startup_) startup_->unload();
    std::_Exit(EXIT_FAILURE);
  } catch (const std::exception& failure) {
    if (frame_ == nullptr) throw;
    frame_->show_message(0, application_title, failure.what(), MessageIcon::Error);
  }
  return true;
}

}  // namespace
}  // namespace quorvel::ui

int main(int argc, char** argv) {
  quorvel::console::open_missing_streams();
  wxDISABLE_DEBUG_SUPPORT();
  // Before the toolkit, which wants a display, and whose own copy of the arguments has lost what is not text.
  quorvel::CommandLine line =
      quorvel::parse_command_line(quorvel::command_line_arguments(argc, argv), *quorvel::system_files());
  if (const auto answer = quorvel::answer_to(line)) {
    quorvel::ui::tell(*answer);
    return EXIT_SUCCESS;
  }
  wxApp::SetInstance(new quorvel::ui::App(std::move(line)));
  int toolkit_argc = 1;  // the arguments are the program's own, even those that look like the toolkit's
  return wxEntry(toolkit_argc, argv);
}
