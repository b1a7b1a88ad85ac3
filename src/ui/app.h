#pragma once

#include <wx/app.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/system.h"
#include "shell/session.h"
#include "shell/startup.h"
#include "ui/main_frame.h"

namespace quorvel::ui {

/// The desktop program: the system's ports, the session, the window, and how they come up and go down.
class App : public wxApp {
 public:
  /// Without the program's name, byte for byte; the toolkit's own copy has lost what is not text.
  explicit App(std::vector<std::string> arguments) : arguments_(std::move(arguments)) {}

  bool OnInit() override;
  int OnRun() override;
  int OnExit() override;
  bool OnExceptionInMainLoop() override;

 private:
  void build();
  void start();
  Places places();

  const std::vector<std::string> arguments_;
  std::optional<int> status_;   // how the program ends when there is nothing to run
  MainFrame* frame_ = nullptr;  // the toolkit's; gone before the session
  std::unique_ptr<Files> files_;
  std::unique_ptr<FileOperation> shell_;
  std::unique_ptr<KeyValueStore> key_values_;
  std::unique_ptr<SocketControl> socket_;
  std::unique_ptr<Clock> clock_;
  std::unique_ptr<ContextMenu> context_menu_;
  std::unique_ptr<Launcher> launcher_;
  std::unique_ptr<InstanceChannel> channel_;
  std::optional<Session> session_;
  std::optional<Startup> startup_;
};

}  // namespace quorvel::ui
