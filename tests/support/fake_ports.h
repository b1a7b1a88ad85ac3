#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/context_menu.h"
#include "platform/instance_channel.h"
#include "platform/main_window.h"
#include "platform/socket_control.h"
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

struct FakeUi : UserInterface {
  explicit FakeUi(Events& events) : events(events) {}
  Events& events;
  std::function<void()> on_events = [] {};
  void add_row(int, const std::string& filename) override { events.add("row " + filename); }
  void update_row(int, const RowUpdate&) override {}
  void show_filters(const std::vector<ListRow>&) override {}
  void show_exceptions(const std::vector<ListRow>&) override {}
  void process_events() override { on_events(); }
  std::optional<bool> ask_confirmation(const ConfirmationQuestion&) override { return true; }
  void show_message(int, const std::string& title, const std::string& text, MessageIcon) override {
    events.add("message " + title + ": " + text);
  }
  void arm_start_timer() override { events.add("timer"); }
  void close() override { events.add("close"); }
};

struct FakeWindow : MainWindow {
  explicit FakeWindow(Events& events) : events(events) {}
  Events& events;
  void set_caption(const std::string& caption) override { events.add("caption " + caption); }
  void add_tray_icon(const std::string& tip) override { events.add("tray " + tip); }
  void remove_tray_icon() override { events.add("no tray"); }
  void set_help_file(const std::string&) override { events.add("help file"); }
  void select_full_rows() override { events.add("full rows"); }
  void centre() override { events.add("centre"); }
  void minimise() override { events.add("minimise"); }
  void accept_tray_clicks() override { events.add("clicks"); }
  void unload() override { events.add("unload"); }
};

/// `others` answers, one by one, whether another copy is running; afterwards none is.
struct FakeChannel : InstanceChannel {
  explicit FakeChannel(Events& events) : events(events) {}
  Events& events;
  std::vector<bool> others;
  std::function<void(const std::string&)> handle;
  bool other_is_running() override {
    if (others.empty()) return false;
    const bool other = others.front();
    others.erase(others.begin());
    return other;
  }
  void send(const std::string& text) override { events.add("send " + text); }
  void receive(std::function<void(const std::string&)> handler) override {
    events.add("receive");
    handle = std::move(handler);
  }
  void stop() override { events.add("stop"); }
};

struct FakeMenu : ContextMenu {
  explicit FakeMenu(Events& events) : events(events) {}
  Events& events;
  void install(const std::string& extension) override { events.add("install " + extension); }
  void remove(const std::string& extension) override { events.add("remove " + extension); }
};

struct FakeClock : Clock {
  explicit FakeClock(Events& events) : events(events) {}
  Events& events;
  std::chrono::year_month_day today() const override { return std::chrono::year(2024) / 5 / 6; }
  std::string time_of_day() const override { return "t"; }
  void wait(std::chrono::milliseconds time) override { events.add("wait " + std::to_string(time.count())); }
};

/// A machine without a network.
struct NoSocket : SocketControl {
  void set_timeout(int) override {}
  void set_secure(bool) override {}
  int connect(const std::string&, int) override { return 1; }
  std::ptrdiff_t write(std::string_view) override { return -1; }
  std::ptrdiff_t read(char*, std::size_t) override { return -1; }
  void disconnect() override {}
  int last_error() const override { return 1; }
  std::string last_error_string() const override { return "no network"; }
};

}  // namespace quorvel::testing
