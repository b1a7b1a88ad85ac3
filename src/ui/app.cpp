#include "ui/app.h"

#include <wx/log.h>
#include <wx/msgdlg.h>

#include <cstdlib>
#include <exception>

#include "shell/version.h"
#include "ui/text.h"

namespace quorvel::ui {
Places App::places() {
  return {.application_data = application_data_folder(*files_),
          .program = program_folder(),
          .work_dir = {},
          .api_base = listings_address()};
}

void App::build() {
  files_ = system_files();
  shell_ = system_file_operation(
      [this](std::uint64_t done, std::uint64_t total) {
        return frame_ == nullptr || frame_->copy_progress(done, total);
      },
      [this](const std::string& path) { return frame_ != nullptr && frame_->ask_to_replace(path); });
  key_values_ = system_key_values(*files_);
  socket_ = system_socket();
  clock_ = system_clock();
  context_menu_ = system_context_menu(*files_);
  launcher_ = system_launcher();
  channel_ = system_instance_channel();

  frame_ = new MainFrame;
  session_.emplace(Ports{*key_values_, *shell_, *files_, *socket_, *frame_, *clock_, context_menu_.get()}, places());
  startup_.emplace(*session_, *frame_, *channel_);
  frame_->attach(*session_, *launcher_, [this] { startup_->unload(); });
  Bind(wxEVT_QUERY_END_SESSION, [this](wxCloseEvent& event) {
    if (frame_ != nullptr) frame_->query_end_session(event);
  });
  Bind(wxEVT_END_SESSION, [this](wxCloseEvent&) {
    if (frame_ != nullptr) frame_->end_session();
  });
  frame_->Bind(wxEVT_DESTROY, [this](wxWindowDestroyEvent& event) {
    if (event.GetWindow() == frame_) frame_ = nullptr;
    event.Skip();
  });
}

bool App::OnInit() {
  SetAppName(application_title);
  // What the toolkit has to say goes where developers look; users are told by messages of the program's own.
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
  if (const std::optional<std::string> trouble = key_values_->trouble()) {
    frame_->show_message(0, application_title, *trouble, MessageIcon::Error);
    status_ = EXIT_FAILURE;
  } else if (startup_->run(arguments_) == StartResult::Ended) {
    status_ = EXIT_SUCCESS;
  } else {
    frame_->show_first();
  }
  if (status_) delete frame_;
}

int App::OnRun() {
  return status_ ? *status_ : wxApp::OnRun();
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

}  // namespace quorvel::ui
