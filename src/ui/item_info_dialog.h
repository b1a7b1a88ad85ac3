#pragma once

#include <wx/dialog.h>
#include <wx/hyperlink.h>
#include <wx/panel.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

#include "platform/launcher.h"
#include "platform/user_interface.h"
#include "queue/work_queue.h"
#include "ui/first_tick.h"

namespace quorvel::ui {

/// Tells what became of one item of the queue.
class ItemInfoDialog : public wxDialog {
 public:
  ItemInfoDialog(wxWindow* parent, const WorkQueue& queue, Launcher& launcher, UserInterface& ui);

  /// The item to tell of.
  void setQID(int index) { index_ = index; }

 private:
  void lay_out();
  wxHyperlinkCtrl* link(const wxString& label, const char* name);
  void fill();
  void fill_outcome(const QueueItem& item);
  void open(const std::string& address);

  const WorkQueue& queue_;
  Launcher& launcher_;
  UserInterface& ui_;
  int index_ = 0;
  wxStaticText *filename_, *status_, *new_name_;
  wxTextCtrl* description_;
  wxPanel* links_;
  wxHyperlinkCtrl *show_link_, *episode_link_;
  FirstTick first_tick_;
};

/// `text`, or as much of its start as fits below `width` when "..." follows. `measure` gives a text's width.
wxString fitted(wxString text, int width, const std::function<int(const wxString&)>& measure);

}  // namespace quorvel::ui
