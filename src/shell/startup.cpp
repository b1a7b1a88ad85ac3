#include "shell/startup.h"

#include <chrono>
#include <exception>
#include <functional>
#include <string_view>
#include <utility>

#include "naming/file_names.h"
#include "platform/native.h"
#include "shell/commands.h"
#include "shell/preferences.h"
#include "shell/version.h"
#include "text/characters.h"
#include "text/failure.h"

namespace quorvel {
namespace {

constexpr std::string_view queue_message = "QV|PI|";
constexpr std::string_view unload_message = "QV|UD|";
constexpr std::string_view command_mark = "C=";  // receivers only skip it

std::string without_mark(std::string_view text) {
  const std::u32string characters = decode(text);
  return characters.size() < command_mark.size() ? std::string() : encode(characters.substr(command_mark.size()));
}

void ignoring_failures(const std::function<void()>& step) {
  try {
    step();
  } catch (const std::exception&) {
    return;  // nobody is left to report it to, and the other steps still matter
  }
}

void remove_data_folder(Session& session) {
  using Request = FileOperationRequest;
  if (session.places.application_data.empty()) return;
  const std::string folder = with_separator(session.places.application_data) + application_title;
  if (!session.ports.files.exists(folder)) return;
  session.ports.shell.perform(
      {Request::Delete, folder, "", Request::Silent | Request::NoConfirmation | Request::SimpleProgress});
}

/// Takes back what the program has put into the system; never fails.
void uninstall(Session& session) {
  ignoring_failures([&] { remove_menu_entries(session); });
  ignoring_failures([&] { session.ports.key_values.erase_all(); });
  // A bare name on purpose: no work directory has been set.
  static constexpr const char* rules = "filters.dat";
  ignoring_failures([&] {
    Files& files = session.ports.files;
    if (native::uninstall_clears_current_folder && files.exists(rules)) files.remove(rules);
  });
  ignoring_failures([&] { remove_data_folder(session); });
}

}  // namespace

StartResult Startup::run(const CommandLine& line) {
  if (line.uninstall) {
    uninstall(session_);
    return StartResult::Ended;
  }
  try {
    if (const std::optional<StartResult> forwarded = forward(line)) return *forwarded;
    start(line);
  } catch (const ProgramEnd&) {
    unload_window();  // the user has already seen why
    return StartResult::Failed;
  } catch (const std::exception& failure) {
    fail(failure.what());
    return StartResult::Failed;
  }
  return unloaded_ ? StartResult::Ended : StartResult::Running;
}

/// Hands the command line over to a running copy. Empty when there is none, so that this one becomes it.
std::optional<StartResult> Startup::forward(const CommandLine& line) {
  if (channel_.become_running_copy()) return {};
  if (line.exact || line.classic) {
    // It would do with the files what its own preferences say.
    session_.ports.ui.show_message(0, application_title,
                                   std::string(application_title) +
                                       " is running already, so nothing was handed to it: whether it uses exact names "
                                       "is set there, under Options, Preferences.",
                                   MessageIcon::Information);
    return StartResult::Failed;
  }
  std::vector<std::string> paths = line.paths;
  if (paths.empty() && line.startup) return StartResult::Ended;
  if (paths.empty()) paths.emplace_back();
  // The other copy may just have been started by the same click and need a moment.
  session_.ports.clock.wait(std::chrono::milliseconds(100));
  StartResult result = StartResult::Ended;
  try {
    for (const std::string& path : paths) channel_.send(std::string(queue_message) + std::string(command_mark) + path);
  } catch (const Failure& failure) {
    // When the other copy has ended meanwhile, this one takes its place. It takes all paths: those already sent
    // were queued by a copy that is gone.
    if (channel_.become_running_copy()) return {};
    session_.ports.ui.show_message(0, application_title, failure.what(), MessageIcon::Error);
    result = StartResult::Failed;
  }
  session_.ports.ui.process_events();
  return result;
}

void Startup::start(const CommandLine& line) {
  if (const std::optional<std::string> trouble = session_.ports.key_values.trouble()) {
    session_.ports.ui.show_message(0, application_title, *trouble, MessageIcon::Error);
    throw ProgramEnd();
  }
  window_.open(std::string(application_title) + " " + short_version, !line.startup);
  channel_.receive([this](const std::string& text) { handle_message(text); });
  session_.write_banner();
  window_.add_tray_icon(application_title);
  session_.setworkdir();
  load_preferences(session_);
  if (line.exact || line.classic) session_.settings.exact = line.exact;
  session_.settle();
  if (!session_.ports.files.exists(help_file(session_.places))) {
    session_.log.debug_log(no_help_file, LogLevel::Normal);
  }
  session_.load_rules();
  for (const std::string& path : line.paths) session_.intake.add_to_queue(path, false);
  session_.ports.ui.arm_start_timer();
  if (line.startup) {
    window_.centre();
    window_.minimise();
  }
  loaded_ = true;
  window_.accept_tray_clicks();
  handle_kept_messages();
}

void Startup::handle_kept_messages() {
  for (const std::string& text : std::exchange(kept_messages_, {})) {
    if (!unloaded_) handle_message(text);
  }
}

void Startup::handle_message(const std::string& text) {
  const bool for_queue = text.starts_with(queue_message);
  // Whoever sends a path then should learn that it would be forgotten.
  const bool closing = unloaded_ || (for_queue && (window_.is_unloading() || session_.processor.is_quitting()));
  if (closing) throw Failure(std::string(application_title) + " is closing");
  if (!loaded_) {
    kept_messages_.push_back(text);
  } else if (for_queue) {
    const std::string path = without_mark(std::string_view(text).substr(queue_message.size()));
    path.empty() ? window_.bring_up() : void(session_.intake.add_to_queue(path, true));
  } else if (text.starts_with(unload_message)) {
    unload_window();
  }
}

void Startup::unload() {
  if (std::exchange(unloaded_, true)) return;
  loaded_ = false;
  if (session_.processor.queue_busy()) session_.processor.may_close();
  session_.http.cancel();
  channel_.stop();
  window_.remove_tray_icon();
}

void Startup::unload_window() {
  unload();
  window_.unload();
}

void Startup::fail(const std::string& reason) {
  // First of all, so that no other copy sends what this one will never do.
  channel_.stop();
  session_.ports.ui.show_message(0, "Error loading Quorvel",
                                 "Quorvel encountered an error loading and cannot continue. (" + reason + ")",
                                 MessageIcon::Error);
  unload_window();
}

}  // namespace quorvel
