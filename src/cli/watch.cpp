#include "cli/watch.h"

#include <set>

#include "cli/json_report.h"
#include "cli/run.h"
#include "platform/console.h"
#include "platform/native.h"
#include "platform/system.h"
#include "shell/item_help.h"
#include "shell/pass_result.h"
#include "text/cut.h"
#include "text/failure.h"
#include "watch/watcher.h"

namespace quorvel::cli {
namespace {

using namespace std::chrono_literals;

// An interrupt may come in just before the waiting begins, and is heard after it.
constexpr auto longest_wait = 1s;
// So that what comes quickly one after the other is looked at together.
constexpr auto breath = 100ms;

/// Every pass has a session of its own, so that nothing grows over the days and what the user changes counts.
class Watching {
 public:
  Watching(const Options& options, Terminal& terminal) : options_(options), terminal_(terminal) {
    log_.on_line = lines_to(terminal, options);
  }

  int run() {
    std::vector<std::string> folders;
    for (const std::string& path : options_.paths) {
      folders.push_back(absolute_path(path));
      if (files_->kind(folders.back()) == Files::Kind::Folder) continue;
      terminal_.error_line("quorvel-cli: There is no folder \"" + path + "\" to watch");
      return wrong_usage;
    }
    if (const int status = with_session(options_, terminal_, [&](Session& session, Hooks&) { return begin(session); });
        status != all_done) {
      return status;
    }
    Watcher watcher({settings_, *files_, *clock_, *notices_, log_}, folders);
    for (const std::string& folder : folders) log_.debug_log("Watching " + folder, LogLevel::Normal);
    while (console::interrupts() == 0) {
      if (const std::vector<ReadyFile> ready = watcher.ready(); !ready.empty()) {
        take(ready, watcher);
      } else if (watcher.pause() > Watcher::Duration::zero()) {
        notices_->wait(std::min<Watcher::Duration>(watcher.pause(), longest_wait));
        clock_->wait(breath);
      }
    }
    log_.debug_log("The watching has ended", LogLevel::Normal);
    return all_done;
  }

 private:
  bool begin(Session& session) {
    session.start();
    check(session);
    return true;
  }

  void check(const Session& session) {
    settings_ = session.settings;
    if (!settings_.confirm) return;
    throw Failure(
        "The setting \"confirm\" wants a word before each file operation, and --watch asks nobody. "
        "With --set confirm=0 it does without");
  }

  void take(const std::vector<ReadyFile>& ready, Watcher& watcher) {
    std::set<std::string> left;
    for (const ReadyFile& file : ready) left.insert(file.path);
    with_session(options_, terminal_, [&](Session& session, Hooks&) {
      const auto tell = session.processor.on_ended;
      session.processor.on_ended = [&](const QueueItem& item) {
        tell(item);
        watcher.ended(item);
        left.erase(item.path);
      };
      return pass(session, ready);
    });
    for (const std::string& path : left) watcher.put_off(path);
  }

  bool pass(Session& session, const std::vector<ReadyFile>& ready) {
    session.open();
    session.load_rules();
    check(session);
    use_options(session, options_);
    for (const auto& [path, folder] : ready) session.intake.take_watched(path, folder, false);
    if (session.queue.count() > 0) session.processor.process_queue();
    terminal_.set_progress({});
    tell(session);
    return true;
  }

  void tell(Session& session) const {
    PassResult result;
    for (int i = 1; i <= session.queue.count(); ++i) {
      const QueueItem& item = session.queue.at(i);
      if (!has_ended(item.state)) continue;
      result.add(item);
      std::string text = item.state == QueueState::Done ? " -> " + job_of(item).destination() : ": " + reason_of(item);
      replace_all(text, "\n", "; ");
      if (!item.is_right_already) session.log.debug_log(item.path + text, LogLevel::Normal);
    }
    if (options_.json) terminal_.data_line(json_of(result, session.queue.count() - result.all(), false));
  }

  const Options& options_;
  Terminal& terminal_;
  const std::unique_ptr<Files> files_ = system_files();
  const std::unique_ptr<Clock> clock_ = system_clock();
  const std::unique_ptr<FolderWatch> notices_ = system_folder_watch();
  DebugLog log_{*clock_};
  Settings settings_;  // as they were at the last pass
};

}  // namespace

int watch(const Options& options, Terminal& terminal) {
  return Watching(options, terminal).run();
}

}  // namespace quorvel::cli
