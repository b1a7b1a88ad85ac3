#include "ui/item_strip.h"

#include <wx/settings.h>

#include <algorithm>

#include "text/cut.h"

namespace quorvel::ui {
namespace {

constexpr int usual_double_click_ms = 500;

/// In the order of Remedy.
constexpr const char* labels[] = {"Choose &Show\u2026", "Add &Exception\u2026", "Re&try This File", "U&ndo",
                                  "Open Fol&der"};

/// As sentences, for there is little room.
std::string in_a_row(std::string text) {
  replace_all(text, ".\n", " ");
  replace_all(text, "\n", ". ");
  return text;
}

}  // namespace

ItemStrip::ItemStrip(Session& session, QueueList& list, MessageBar& bar, std::function<void(Remedy, int)> apply)
    : session_(session), list_(list), bar_(bar), apply_(std::move(apply)) {
  list_.on_select = [this] { on_select(); };
  bar_.on_dismissed = [this] {
    dismissed_ = row_;
    shown_ = {};
  };
  pause_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { look(); });
}

ItemStrip::~ItemStrip() {
  list_.on_select = bar_.on_dismissed = [] {};  // they go later
}

int ItemStrip::selected() const {
  const std::vector<int> rows = list_.selection();
  return rows.size() == 1 ? rows.front() : 0;
}

void ItemStrip::on_select() {
  if (list_.is_following() || row_ == selected()) return;
  row_ = selected();
  // The second click of a double-click is not to meet a button that has just come, and whoever moves through the rows
  // would see the strip come and go.
  pause_.StartOnce(std::max(wxSystemSettings::GetMetric(wxSYS_DCLICK_MSEC), usual_double_click_ms));
}

void ItemStrip::look() {
  if (pause_.IsRunning()) return;
  if (!session_.processor.queue_busy()) row_ = selected();
  if (row_ != dismissed_) dismissed_ = 0;
  const ItemHelp help = help_for(session_, row_);
  const bool is_elsewhere = row_ != selected();  // a pass has gone on to another row
  if (help.text.empty() || !list_.IsShown() || row_ == dismissed_) {
    shown_ = {};
    return bar_.close();
  }
  const std::string name = is_elsewhere ? session_.queue.at(row_).filename + ": " : "";
  if (std::exchange(shown_, {name + help.text, help.remedies}) == shown_) return;
  std::vector<MessageBar::Button> buttons;
  for (const Remedy remedy : help.remedies) {
    const auto apply = [this, remedy, row = row_] { apply_(remedy, row); };
    buttons.push_back({labels[static_cast<int>(remedy)], apply, false});
  }
  bar_.show(in_a_row(shown_.first), buttons);
}

}  // namespace quorvel::ui
