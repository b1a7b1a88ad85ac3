#include "ui/window_life.h"

#include <wx/app.h>

#include <algorithm>
#include <utility>

#include "shell/version.h"
#include "ui/menus.h"

namespace quorvel::ui {
namespace {

constexpr int tray_watch_ms = 2000;

}  // namespace

WindowLife::WindowLife(wxFrame& frame, CallStack& stack) : frame_(frame), stack_(stack) {
  stack_.on_empty = [this] { stack_is_empty(); };
  frame_.Bind(wxEVT_CLOSE_WINDOW, &WindowLife::on_close, this);
  frame_.Bind(wxEVT_ICONIZE, &WindowLife::on_iconize, this);
  tray_watch_.Bind(wxEVT_TIMER, &WindowLife::on_tray_watch, this);
  // The desktop session's end goes to the program rather than to its windows.
  wxTheApp->Bind(wxEVT_QUERY_END_SESSION, &WindowLife::on_query_end_session, this);
  wxTheApp->Bind(wxEVT_END_SESSION, &WindowLife::on_end_session, this);
}

WindowLife::~WindowLife() {
  wxTheApp->Unbind(wxEVT_QUERY_END_SESSION, &WindowLife::on_query_end_session, this);
  wxTheApp->Unbind(wxEVT_END_SESSION, &WindowLife::on_end_session, this);
}

// Hidden and shown.

void WindowLife::minimise() {
  minimised_ = true;
  tray_watch_.Start(tray_watch_ms);
  if (lives_in_tray()) {
    frame_.Hide();
  } else {
    if (!frame_.IsShown()) frame_.Show();
    frame_.Iconize();
  }
}

void WindowLife::restore() {
  minimised_ = false;
  tray_watch_.Stop();
  frame_.Iconize(false);
  frame_.Show();
  bring_to_front(frame_);
}

void WindowLife::toggle() {
  minimised_ ? restore() : minimise();
}

void WindowLife::on_iconize(wxIconizeEvent& event) {
  event.Skip();
  if (!event.IsIconized()) {
    if (frame_.IsShown()) minimised_ = false;
  } else if (!minimised_) {
    minimise();
  }
}

void WindowLife::add_tray_icon(const std::string& tip) {
  remove_tray_icon();
  const TrayIcon::Actions actions{[this] { toggle_from_tray(); }, [this] { restore(); },
                                  [this] { return open_tray_menu(); },
                                  [this](wxMenu& menu) { stack_.pop_up(frame_, menu, wxDefaultPosition); }};
  tray_icon_ = std::make_unique<TrayIcon>(frame_, tip, actions);
}

void WindowLife::on_tray_watch(wxTimerEvent&) {
  if (!minimised_) return tray_watch_.Stop();
  // The tray went away with the window in it, or has come only now, as it may when both start with the desktop.
  if (frame_.IsShown() == lives_in_tray()) minimise();
}

void WindowLife::toggle_from_tray() {
  if (tray_clicks_count_ && !stack_.has_dialog()) toggle();
}

wxMenu* WindowLife::open_tray_menu() {
  if (!tray_clicks_count_ || stack_.has_dialog()) return nullptr;
  if (!minimised_) frame_.Raise();
  return tray_menu(minimised_ ? "&Show" : "&Hide").release();
}

void WindowLife::show_progress(const std::string& text) {
  if (tray_icon_ == nullptr || std::exchange(progress_, text) == text) return;
  tray_icon_->set_tip(application_title + (text.empty() ? "" : ": " + text));
}

bool WindowLife::is_in_front() const {
  const auto is_active = [](const wxWindow* window) {
    const auto* const top = dynamic_cast<const wxTopLevelWindow*>(window);
    return top != nullptr && const_cast<wxTopLevelWindow*>(top)->IsActive();
  };
  return frame_.IsShown() && !frame_.IsIconized() && std::ranges::any_of(wxTopLevelWindows, is_active);
}

void WindowLife::notify(const std::string& text) {
  if (tray_icon_ != nullptr && !is_in_front()) tray_icon_->notify(application_title, text);
}

// The end.

void WindowLife::on_close(wxCloseEvent& event) {
  if (!event.CanVeto() || hooks_.may_close()) {
    begin_unload();
  } else {
    event.Veto();
  }
}

void WindowLife::on_query_end_session(wxCloseEvent& event) {
  if (!hooks_.may_close() && event.CanVeto()) event.Veto();
}

void WindowLife::close() {
  // With a dialog open the pass ran inside of it, and the program ends of itself: what the user is doing there comes
  // first.
  if (stack_.has_dialog() && !unloading_) {
    close_when_empty_ = true;
  } else {
    frame_.Close();
  }
}

void WindowLife::unload() {
  hooks_.may_close();
  hooks_.stop();
  begin_unload();
}

void WindowLife::begin_unload() {
  if (std::exchange(unloading_, true)) return;
  stack_.end_dialogs();
  if (stack_.empty()) stack_is_empty();
}

/// Only the toolkit's own loop is left on the stack, or something that will not come here again.
void WindowLife::stack_is_empty() {
  if (unloading_) {
    frame_.CallAfter([this] { finish_unload(); });
  } else if (std::exchange(close_when_empty_, false) && !hooks_.stays_open()) {
    frame_.Close();  // else something came in meanwhile: the pass over it will ask again
  }
}

void WindowLife::finish_unload() {
  if (!stack_.empty() || std::exchange(unloaded_, true)) return;
  hooks_.on_unload();
  frame_.Destroy();
}

}  // namespace quorvel::ui
