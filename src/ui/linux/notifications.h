#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace quorvel::ui {

/// What the desktop shows wherever the user is, by the service org.freedesktop.Notifications of the session's bus.
/// Nothing here waits for that; where there is no bus or no service, nothing happens.
class Notifications {
 public:
  /// `on_click` gets what lets the window come in front, where the desktop gives that.
  explicit Notifications(std::function<void(const std::string& token)> on_click);
  /// What was shown stays.
  ~Notifications();
  Notifications(const Notifications&) = delete;
  Notifications& operator=(const Notifications&) = delete;

  /// In place of what was shown before.
  void show(const std::string& title, const std::string& text);

 private:
  struct Bus;
  const std::unique_ptr<Bus> bus_;
};

}  // namespace quorvel::ui
