#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/context_menu.h"
#include "platform/instance_channel.h"
#include "platform/key_value_store.h"
#include "platform/launcher.h"
#include "platform/log.h"
#include "platform/main_window.h"
#include "platform/user_interface.h"
#include "text/failure.h"

namespace quorvel::testing {

/// What happened, in order. A fake throws Failure instead of doing what `fails` names.
struct Events {
  std::vector<std::string> list;
  std::string fails;
  void add(const std::string& event) {
    if (!fails.empty() && event.starts_with(fails)) throw Failure("no " + fails);
    list.push_back(event);
  }
};

/// Records what the user would see, and does what the user would do.
struct FakeUi : UserInterface {
  explicit FakeUi(Events& events) : events(events) {}
  Events& events;
  std::vector<std::string> rows;  // "filename|new name|status"
  std::string states;             // that any row has shown, in parentheses where it was not scrolled into view
  std::vector<ListRow> filters, exceptions;
  std::vector<std::string> messages;
  std::vector<ConfirmationQuestion> questions;
  std::optional<bool> answer = true;
  std::function<void()> on_events = [] {};
  int timer_starts = 0, closed = 0;

  void add_row(int, const std::string& filename) override {
    events.add("row " + filename);
    rows.push_back(filename + "||");
  }
  void update_row(int index, const RowUpdate& update) override {
    if (index < 1 || index > static_cast<int>(rows.size())) throw Failure("no such row");
    std::string& row = rows[static_cast<std::size_t>(index) - 1];
    const std::size_t first = row.find('|'), second = row.find('|', first + 1);
    const std::string filename = row.substr(0, first), name = row.substr(first + 1, second - first - 1);
    const std::string status = update.status.value_or(row.substr(second + 1));
    row = filename + "|" + update.new_name.value_or(name) + "|" + status;
    states += (update.scroll_into_view ? status : "(" + status + ")") + " ";
  }
  void show_filters(const std::vector<ListRow>& shown) override { filters = shown; }
  void show_exceptions(const std::vector<ListRow>& shown) override { exceptions = shown; }
  void process_events() override { on_events(); }
  std::optional<bool> ask_confirmation(const ConfirmationQuestion& question) override {
    questions.push_back(question);
    return answer;
  }
  void show_message(int id, const std::string& title, const std::string& text, MessageIcon) override {
    messages.push_back((id > 0 ? std::to_string(id) + " " : "") + title + ": " + text);
    events.add("message " + messages.back());
  }
  void arm_start_timer() override { events.add("timer"), ++timer_starts; }
  void close() override { events.add("close"), ++closed; }
};

/// All that the desktop does for the program: its window, its tray, menu entries, other programs and other copies.
struct FakeDesktop : MainWindow, InstanceChannel, ContextMenu, Launcher {
  explicit FakeDesktop(Events& events) : events(events) {}
  Events& events;
  int others = 0;  // how often another copy is found running
  bool launches = true, is_closing = false;
  std::function<void(const std::string&)> handle;

  void open(const std::string& caption, bool visible) override {
    events.add((visible ? "open " : "open hidden ") + caption);
  }
  void add_tray_icon(const std::string& tip) override { events.add("tray " + tip); }
  void remove_tray_icon() override { events.add("no tray"); }
  void centre() override { events.add("centre"); }
  void minimise() override { events.add("minimise"); }
  void bring_up() override { events.add("up"); }
  void accept_tray_clicks() override { events.add("clicks"); }
  void unload() override { events.add("unload"); }
  bool is_unloading() const override { return is_closing; }

  bool become_running_copy() override { return others-- <= 0; }
  void send(const std::string& text) override { events.add("send " + text); }
  void receive(std::function<void(const std::string&)> handler) override {
    events.add("receive");
    handle = std::move(handler);
  }
  void stop() override { events.add("stop"); }

  void install(const std::string& extension) override { events.add("install " + extension); }
  void remove(const std::string& extension) override { events.add("remove " + extension); }

  bool open(const std::string& target) override { return events.add("open " + target), launches; }
  bool start(const std::string& program, const std::string& argument) override {
    return events.add(program + "|" + argument), launches;
  }
};

struct FakeClock : Clock {
  explicit FakeClock(Events& events) : events(events) {}
  Events& events;
  std::chrono::year_month_day today() const override { return std::chrono::year(2026) / 3 / 14; }
  std::string time_of_day() const override { return "14:05:33"; }
  std::chrono::local_seconds local(std::chrono::sys_seconds moment) const override {
    return std::chrono::local_seconds(moment.time_since_epoch());
  }
  std::chrono::steady_clock::time_point now;  // nothing but waiting takes time
  std::chrono::steady_clock::time_point instant() const override { return now; }
  void wait(std::chrono::milliseconds time) override {
    now += time;
    events.add("wait " + std::to_string(time.count()));
  }
};

/// Settings in memory; writing fails on demand.
struct FakeKeyValues : KeyValueStore {
  std::map<std::string, std::string> texts;
  std::map<std::string, std::uint32_t> numbers;
  bool fails = false;
  int writes = 0;
  std::optional<std::string> damage;

  std::optional<std::string> trouble() const override { return damage; }
  std::optional<std::string> read_string(const std::string& name) const override { return value(texts, name); }
  std::optional<std::uint32_t> read_number(const std::string& name) const override { return value(numbers, name); }
  void erase_all() override { texts.clear(), numbers.clear(); }
  void write(const std::vector<Named>& values) override {
    if (fails) throw Failure("no room");
    ++writes;
    for (const auto& [name, value] : values) {
      if (const auto* const text = std::get_if<std::string>(&value)) texts[name] = *text;
      if (const auto* const number = std::get_if<std::uint32_t>(&value)) numbers[name] = *number;
    }
  }

 private:
  template <typename Value>
  static std::optional<Value> value(const std::map<std::string, Value>& values, const std::string& name) {
    const auto found = values.find(name);
    return found == values.end() ? std::nullopt : std::optional(found->second);
  }
};

/// A log that keeps its lines.
struct Lines : Log {
  std::vector<std::string> list;
  void debug_log(std::string_view text, LogLevel) override { list.emplace_back(text); }
};

}  // namespace quorvel::testing
