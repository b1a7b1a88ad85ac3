#include "shell/item_help.h"

#include "shell/show_choice.h"
#include "text/cut.h"

namespace quorvel {
namespace {

/// Whether the file has been put where it belongs, and could not be taken back.
bool is_at_its_new_place(const QueueItem& item, const Files& files) {
  return item.done_stamp && !files.exists(item.path) && files.exists(job_of(item).destination());
}

/// The first that help most; the menu has them all.
std::vector<Remedy> remedies_for(const Session& session, int index) {
  const QueueItem& item = session.queue.at(index);
  if (item.state == QueueState::Done) return {Remedy::Undo, Remedy::OpenFolder};
  if (item.is_right_already || is_at_its_new_place(item, session.ports.files)) return {Remedy::OpenFolder};
  const bool is_about_show = item.failed_at == QueueState::Searching || item.failed_at == QueueState::FetchingListings;
  if (!is_about_show) return {Remedy::Retry, Remedy::OpenFolder};
  if (ShowChoice::is_possible(session, index)) return {Remedy::ChooseShow, Remedy::AddException, Remedy::Retry};
  return {Remedy::AddException, Remedy::Retry, Remedy::OpenFolder};
}

}  // namespace

std::string reason_of(const QueueItem& item) {
  if (item.is_right_already && !item.is_left_by_rule) return "The file has its name and its place already.";
  std::string text;
  if (item.state == QueueState::Done) {
    for (const std::string& doubt : item.doubts) text.append(text.empty() ? "" : "\n").append("Look at this: " + doubt);
  } else if (has_ended(item.state)) {
    text = item.error_text;
    replace_all(text, "\r\n", "\n");
    // Nothing else is known of a file that has gone.
    if (text.empty()) text = "The file was gone";
  }
  return text;
}

ItemHelp help_for(const Session& session, int item) {
  if (!session.queue.holds(item)) return {};
  const QueueItem& of = session.queue.at(item);
  if (of.state == QueueState::Cancelled || (!needs_user(of) && !of.is_right_already)) return {};
  return {reason_of(of), remedies_for(session, item)};
}

}  // namespace quorvel
