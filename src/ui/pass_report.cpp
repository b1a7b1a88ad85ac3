#include "ui/pass_report.h"

#include <utility>

#include "shell/dialogs.h"
#include "shell/preferences.h"

namespace quorvel::ui {

PassReport::PassReport(Session& session, MessageBar& bar, WindowLife& life, Actions actions)
    : session_(session), bar_(bar), life_(life), actions_(std::move(actions)) {
  session_.processor.on_ended = [this](const QueueItem& item) { ended_.insert(&item); };
  session_.processor.on_pass_ended = [this] { pass_ended(); };
}

PassReport::~PassReport() {
  session_.processor.on_ended = [](const QueueItem&) {};
  session_.processor.on_pass_ended = [] {};
}

void PassReport::show_progress() {
  const int left = session_.processor.left();
  if (left == 0) return life_.show_progress({});
  int done = 0;
  for (const QueueItem* const item : ended_) done += has_ended(item->state) ? 1 : 0;
  life_.show_progress(std::to_string(done) + " of " + std::to_string(done + left));
}

void PassReport::pass_ended() {
  std::set<const QueueItem*> ended = std::exchange(ended_, {});
  on_pass_ended();
  show_progress();
  if (const std::string review = actions_.review(); !review.empty()) {
    ended_ = std::move(ended);
    return life_.notify(review);
  }
  PassResult result;
  for (const QueueItem* const item : ended) result.add(*item);
  if (result.all() > 0 && !session_.processor.is_quitting()) tell(result);
}

void PassReport::tell(const PassResult& result) {
  bar_.close();  // it is about an earlier pass
  life_.notify(result.text());
  std::string text;
  std::vector<MessageBar::Button> buttons;
  // Of a single file in sight, its row tells all.
  if (result.all() > 1 || !life_.is_in_front()) {
    text = result.text() + ".";
    const std::string count = std::to_string(result.done());
    const auto undo = [this, operation = result.past_id] { actions_.undo(operation); };
    if (result.done() > 0) buttons.push_back({result.done() == 1 ? "U&ndo" : "Undo &All " + count, undo});
    if (result.failed > 0) buttons.push_back({"&Retry Failed", actions_.retry_failed});
  }
  if (const std::string notice = lost_characters_notice(session_, result.lossy); !notice.empty()) {
    text += (text.empty() ? "" : " ") + notice;
    buttons.push_back({"&Use Exact Names", actions_.use_exact_names});
    buttons.push_back({"&Don't Show Again", [this] { switch_off(session_.settings_store, lost_characters_message); }});
  }
  if (!text.empty()) bar_.show(text, buttons);
}

}  // namespace quorvel::ui
