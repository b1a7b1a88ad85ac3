#pragma once

#include <string>

namespace quorvel {

/// What start-up, shutdown and messages from other copies ask of the main window.
class MainWindow {
 public:
  virtual ~MainWindow() = default;

  /// Makes the window, under this caption. It is shown at once when it is to be `visible`, while what is in it is still
  /// being made.
  virtual void open(const std::string& caption, bool visible) = 0;

  /// With `tip` shown over it. Does nothing where the desktop has no tray.
  virtual void add_tray_icon(const std::string& tip) = 0;
  virtual void remove_tray_icon() = 0;

  /// In the middle of the screen; minimised, it lives in the tray, or in the task bar where there is no tray.
  virtual void centre() = 0;
  virtual void minimise() = 0;

  /// Shows the window again, as it was before it was minimised, and brings it to the front.
  virtual void bring_up() = 0;

  /// From now on clicks on the tray icon count.
  virtual void accept_tray_clicks() = 0;

  /// Ends the window, and the program with it, without asking anybody; safe while a dialog is open or events are being
  /// processed in the middle of a pass.
  virtual void unload() = 0;

  /// Whether its end has begun, for which it may still have to wait.
  virtual bool is_unloading() const = 0;
};

}  // namespace quorvel
