#pragma once

#include <wx/dialog.h>

#include <functional>
#include <string>

#include "platform/log.h"

namespace quorvel::ui {

class AboutBox : public wxDialog {
 public:
  /// `address` is shown and `open_website` opens it; `socket_version` is told in the log when a key is pressed.
  AboutBox(wxWindow* parent, Log& log, const std::string& address, std::function<void()> open_website,
           std::string socket_version);

 private:
  void on_key(wxKeyEvent& event);

  Log& log_;
  const std::function<void()> open_website_;
  const std::string socket_version_;
};

}  // namespace quorvel::ui
