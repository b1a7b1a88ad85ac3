#include "cli/run.h"

#include "cli/apply.h"
#include "cli/dry_run.h"
#include "cli/hooks.h"
#include "cli/json_report.h"
#include "cli/log_file.h"
#include "cli/past.h"
#include "cli/run_store.h"
#include "cli/show_question.h"
#include "cli/terminal.h"
#include "cli/terminal_ui.h"
#include "cli/watch.h"
#include "naming/file_names.h"
#include "platform/console.h"
#include "platform/native.h"
#include "platform/system.h"
#include "shell/pass_result.h"
#include "shell/session.h"
#include "shell/version.h"
#include "text/cut.h"
#include "text/failure.h"

namespace quorvel::cli {
namespace {

std::string reason(Refusal refusal) {
  switch (refusal) {
    case Refusal::None:
      break;
    case Refusal::TooShort:
      return "the path is too short";
    case Refusal::Missing:
      return "no such file or folder";
    case Refusal::NotAFile:
      return "neither a file nor a folder";
    case Refusal::AlreadyQueued:
      return "already queued";
    case Refusal::TypeNotListed:
      return "its type is not listed in the settings";
    case Refusal::Sample:
      return "a sample, as its path says";
  }
  return {};
}

std::string some(int count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// The first run in a work directory deletes its caches, so a folder of that name with anything else in it is refused.
void refuse_foreign_cache(Files& files, const std::string& work_dir) {
  const CacheFolder cache(files, work_dir);
  if (const std::optional<std::string> foreign = cache.foreign_use()) {
    throw Failure("The folder " + cache.path() + " " + *foreign + ", so it cannot be used for caches");
  }
}

std::string checked_work_dir(Files& files, const std::string& given) {
  std::string work_dir = with_separator(absolute_path(given));
  if (given.empty() || files.kind(work_dir) != Files::Kind::Folder) {
    throw Failure("The work folder \"" + given + "\" does not exist");
  }
  refuse_foreign_cache(files, work_dir);
  return work_dir;
}

/// Returns whether the file or folder is in the queue, as far as can be told.
bool queue_path(Session& session, const std::string& path, Terminal& terminal) {
  const IntakeResult result = session.intake.take(absolute_path(path), false);
  if (result.is_folder) {
    std::string account = path + ": " + some(result.queued, "file") + " queued";
    if (result.left_out > 0) account += ", " + some(result.left_out, "file") + " left out";
    if (result.unread > 0) account += ", " + some(result.unread, "folder") + " not read";
    terminal.error_line(account);
    return result.unread == 0;
  }
  if (result.refusal != Refusal::None) {
    terminal.error_line(path + ": not queued: " + reason(path.empty() ? Refusal::Missing : result.refusal));
    return result.refusal == Refusal::AlreadyQueued;
  }
  return true;
}

/// Returns whether all are in the queue.
bool queue_paths(Session& session, const std::vector<std::string>& paths, Terminal& terminal) {
  bool all_queued = true;
  for (const std::string& path : paths) {
    std::vector<std::string> fitting = native::files_of_pattern(path);
    if (fitting.empty()) fitting = {path};
    for (const std::string& each : fitting) all_queued = queue_path(session, each, terminal) && all_queued;
  }
  return all_queued;
}

/// Reports why items failed and how many did. Returns whether all are done.
bool tell_outcome(const WorkQueue& queue, const Options& options, Terminal& terminal) {
  PassResult result;
  for (int i = 1; i <= queue.count(); ++i) {
    const QueueItem& item = queue.at(i);
    if (!has_ended(item.state)) continue;
    result.add(item);
    if (item.state == QueueState::Done) continue;
    std::string why = item.error_text.empty() ? "the file was gone" : item.error_text;
    replace_all(why, "\r\n", "; ");
    terminal.error_line(item.path + ": " + why);
  }
  const int left = queue.count() - result.all();
  if (options.json) terminal.data_line(json_of(result, left, options.dry_run));
  terminal.error_line(
      std::to_string(result.done()) + " done, " + std::to_string(result.failed) + " failed, " +
      std::to_string(result.cancelled) + " cancelled" +
      (result.right_already == 0 ? "" : ", " + std::to_string(result.right_already) + " right already") +
      (left == 0 ? "" : ", " + std::to_string(left) + " not processed"));
  if (result.lossy > 0) {
    terminal.error_line(some(result.lossy, "name") + (result.lossy == 1 ? " has" : " have") +
                        " lost characters that the service gave; --exact keeps them");
  }
  return queue.count() > 0 && result.done() + result.right_already == queue.count();
}

/// Returns whether all is done.
bool run_session(Session& session, const Options& options, Hooks& hooks, Terminal& terminal) {
  ShowQuestion question(session.lookup, terminal);
  if (options.choose) {
    session.exact.choose = [&](const QueueItem& item, const UnclearShow& unclear) {
      return question.ask(item, unclear);
    };
  }
  if (options.plan || options.history || options.undo) {
    session.open();
    if (options.plan) return apply_plan(session, *options.plan, options.json, hooks, terminal);
    if (options.undo) return undo_pass(session, options.pass, options.json, terminal);
    tell_history(session, *options.history, options.json, terminal);
    return true;
  }
  session.start();
  use_options(session, options);
  const bool all_queued = queue_paths(session, options.paths, terminal);
  if (session.queue.count() > 0) session.processor.process_queue();
  terminal.set_progress({});
  return tell_outcome(session.queue, options, terminal) && all_queued;
}

/// What holds for every run, before the session is opened.
void prepare(Session& session, const Options& options, Hooks& hooks, TerminalUi& ui, Terminal& terminal) {
  session.log.on_line = lines_to(terminal, options);
  session.exact.show_of_all = options.show_id;
  session.exact.forgets_choices = options.forget;
  session.processor.on_ended = [&](const QueueItem& item) {
    if (options.json) terminal.data_line(json_of(item, options.dry_run));
    hooks.item_ended(item);
  };
  session.processor.on_pass_ended = [&] { hooks.pass_ended(); };
  ui.on_quit = [&] { session.processor.may_close(); };
  ui.on_cancel = [&] { session.stop(); };
  console::count_interrupts();
}

}  // namespace

std::function<void(const std::string&, bool)> lines_to(Terminal& terminal, const Options& options) {
  return [&](const std::string& line, bool) {
    terminal.log_line(line, options.json || options.plan || options.history || options.undo);
  };
}

void use_options(Session& session, const Options& options) {
  if (options.rule) session.filters.use_only(*options.rule);
  session.settings.review = false;  // --dry-run and --apply are for that here
}

int run(const Options& options) {
  std::unique_ptr<LogFile> log;
  try {
    if (options.log) log = std::make_unique<LogFile>(*options.log, system_clock());
  } catch (const Failure& failure) {
    Terminal().error_line(std::string("quorvel-cli: ") + failure.what());
    return wrong_usage;
  }
  Terminal terminal(log.get());
  if (options.watch) return watch(options, terminal);
  return with_session(options, terminal,
                      [&](Session& session, Hooks& hooks) { return run_session(session, options, hooks, terminal); });
}

int with_session(const Options& options, Terminal& terminal, const Work& work) {
  TerminalUi ui(terminal);
  const std::unique_ptr<Files> real_files = system_files();
  const std::unique_ptr<FileOperation> real_shell =
      system_file_operation([&](std::uint64_t done, std::uint64_t total) { return ui.copy_progress(done, total); }, {});
  DryRun dry_run(*real_files, [&](const std::string& from, const std::string& to) {
    if (!options.json) terminal.out_line(from + " -> " + to);
  });
  Files& files = options.dry_run ? dry_run : *real_files;
  FileOperation& shell = options.dry_run ? static_cast<FileOperation&>(dry_run) : *real_shell;

  const std::unique_ptr<KeyValueStore> key_values = system_key_values(files, application_title);
  if (const std::optional<std::string> trouble = key_values->trouble()) {
    terminal.error_line("quorvel-cli: " + *trouble);
    return something_failed;
  }
  RunStore store(*key_values, options.dry_run);
  store.replace(options.settings);
  store.replace({{"autoclose", 0U}});                     // there is no window
  if (options.dry_run) store.replace({{"confirm", 0U}});  // nothing is done that would need a word

  Places places{.application_data = {}, .program = program_folder(), .work_dir = {}, .api_base = listings_address()};
  try {
    if (options.work_dir) {
      places.work_dir = checked_work_dir(files, *options.work_dir);
    } else {
      places.application_data = application_data_folder(files);
    }
  } catch (const Failure& failure) {
    terminal.error_line(std::string("quorvel-cli: ") + failure.what());
    return wrong_usage;
  }

  const std::unique_ptr<SocketControl> socket = system_socket();
  const std::unique_ptr<WebClient> web = system_web_client(user_agent());
  const std::unique_ptr<Clock> clock = system_clock();
  Session session({store, shell, files, *socket, *web, ui, *clock}, std::move(places));
  try {
    Hooks hooks(options, terminal);
    prepare(session, options, hooks, ui, terminal);
    if (work(session, hooks) && !hooks.have_failed()) return all_done;
  } catch (const ProgramEnd&) {
    // The user has seen why.
  } catch (const Failure& failure) {
    terminal.error_line(std::string("quorvel-cli: ") + failure.what());
  }
  return something_failed;
}

}  // namespace quorvel::cli
