#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "listings_service.h"
#include "platform/curl/curl_socket_control.h"
#include "platform/system.h"
#include "shell/session.h"
#include "temporary_folder.h"
#include "text/code_page.h"
#include "text/failure.h"

namespace quorvel::testing {

/// Settings in memory; writing fails on demand.
class MemoryKeyValues : public KeyValueStore {
 public:
  std::map<std::string, std::string> texts;
  std::map<std::string, std::uint32_t> numbers;
  bool fails = false;

  std::optional<std::string> trouble() const override { return {}; }
  std::optional<std::string> read_string(const std::string& name) const override { return value(texts, name); }
  std::optional<std::uint32_t> read_number(const std::string& name) const override { return value(numbers, name); }
  void erase_all() override { texts.clear(), numbers.clear(); }
  void write_string(const std::string& name, const std::string& text) override { set(texts, name, text); }
  void write_number(const std::string& name, std::uint32_t number) override { set(numbers, name, number); }

 private:
  template <typename Value>
  static std::optional<Value> value(const std::map<std::string, Value>& values, const std::string& name) {
    const auto found = values.find(name);
    return found == values.end() ? std::nullopt : std::optional(found->second);
  }
  template <typename Value>
  void set(std::map<std::string, Value>& values, const std::string& name, const Value& value) {
    if (fails) throw Failure("no room");
    values[name] = value;
  }
};

/// Records what the user would see, and does what the user would do.
class RecordingUi : public UserInterface {
 public:
  std::vector<std::string> rows;  // "filename|new name|status"
  std::vector<ListRow> filters, exceptions;
  std::vector<std::string> messages;
  std::vector<ConfirmationQuestion> questions;
  std::optional<bool> answer = true;
  std::function<void()> on_events = [] {};
  int timer_starts = 0, closed = 0, scrolls = 0;

  void add_row(int, const std::string& filename) override { cells_.push_back({filename, "", ""}), redraw(); }
  void update_row(int index, const RowUpdate& update) override {
    if (index < 1 || index > static_cast<int>(cells_.size())) throw Failure("no such row");
    std::vector<std::string>& cells = cells_[static_cast<std::size_t>(index) - 1];
    if (update.new_name) cells[1] = *update.new_name;
    if (update.status) cells[2] = *update.status;
    scrolls += update.scroll_into_view ? 1 : 0;
    redraw();
  }
  void show_filters(const std::vector<ListRow>& shown) override { filters = shown; }
  void show_exceptions(const std::vector<ListRow>& shown) override { exceptions = shown; }
  void process_events() override { on_events(); }
  std::optional<bool> ask_confirmation(const ConfirmationQuestion& question) override {
    questions.push_back(question);
    return answer;
  }
  void show_message(int, const std::string& title, const std::string& text, MessageIcon) override {
    messages.push_back(title + ": " + text);
  }
  void arm_start_timer() override { ++timer_starts; }
  void close() override { ++closed; }

 private:
  void redraw() {
    rows.clear();
    for (const auto& cells : cells_) rows.push_back(cells[0] + "|" + cells[1] + "|" + cells[2]);
  }
  std::vector<std::vector<std::string>> cells_;
};

class FixedClock : public Clock {
 public:
  std::chrono::year_month_day today() const override { return std::chrono::year(2026) / 3 / 14; }
  std::string time_of_day() const override { return "14:05:33"; }
  void wait(std::chrono::milliseconds) override {}
};

/// A whole session on real files and real connections, with the listings service beside it.
struct TestSession {
  TemporaryFolder folder;
  ListingsService service;
  MemoryKeyValues key_values;
  RecordingUi ui;
  FixedClock clock;
  std::unique_ptr<Files> files = system_files();
  std::unique_ptr<FileOperation> shell = system_file_operation({}, {});
  CurlSocketControl socket;
  Session session{
      {key_values, *shell, *files, socket, ui, clock},
      {.application_data = folder / "data", .program = folder / "program", .work_dir = {}, .api_base = service.base()}};

  TestSession() {
    files->create_folder(folder / "data");
    files->create_folder(folder / "in");
  }

  std::string work_dir() const { return folder / "data/Quorvel/"; }

  /// Starts the session with every step logged and everything of the start-up forgotten.
  void start() {
    key_values.numbers["logging"] = 2;
    session.start();
  }

  void write(const std::string& relative, const std::string& bytes) const {
    if (!files->replace(folder / relative, bytes)) throw Failure("cannot write " + relative);
  }
  std::string read(const std::string& relative) const { return files->read(folder / relative).value_or("(missing)"); }
  bool exists(const std::string& relative) const { return files->exists(folder / relative); }

  /// Puts a file that holds its own name into "in" and queues it; its index.
  int add(const std::string& name) {
    write("in/" + name, name);
    session.intake.add_to_queue(folder / ("in/" + name), false);
    return session.queue.count();
  }
  QueueItem& item(int index) { return session.queue.at(index); }

  /// The log without its times, from line `from` on, "|" between lines.
  std::string log(std::size_t from = 0) const {
    std::string text;
    for (; from < session.log.lines().size(); ++from) {
      text += (text.empty() ? "" : "|") + session.log.lines()[from].substr(sizeof("(14:05:33)"));
    }
    return text;
  }
  bool logged(const std::string& line) const { return ("|" + log() + "|").find("|" + line + "|") != std::string::npos; }
};

}  // namespace quorvel::testing
