#include "queue/queue_view.h"

#include <array>

#include "naming/file_names.h"
#include "text/failure.h"

namespace quorvel {
namespace {

struct Appearance {
  QueueState state;
  RowUpdate::Icon icon;
  std::string_view status;  // empty where the item's rule decides
};

constexpr auto appearances = std::to_array<Appearance>({
    {QueueState::Cancelled, RowUpdate::FailedIcon, "Cancelled"},
    {QueueState::Failed, RowUpdate::FailedIcon, "Failed"},
    {QueueState::Inactive, RowUpdate::WaitingIcon, "Inactive"},
    {QueueState::Scanning, RowUpdate::WaitingIcon, "Scanning"},
    {QueueState::Searching, RowUpdate::WaitingIcon, "Searching"},
    {QueueState::FetchingListings, RowUpdate::WaitingIcon, "Fetching Listings"},
    {QueueState::CheckingFilters, RowUpdate::WaitingIcon, "Checking Filters"},
    {QueueState::Processing, RowUpdate::WaitingIcon, ""},
    {QueueState::Done, RowUpdate::DoneIcon, "Done"},
});

/// Fills in the changes up to the first that fails; false when one does.
bool describe(const QueueItem& item, const FilterList& filters, RowUpdate& row) {
  for (const Appearance& appearance : appearances) {
    if (appearance.state != item.state) continue;
    row.scroll_into_view = item.state != QueueState::Inactive;
    row.icon = item.is_right_already                                    ? RowUpdate::DoneIcon
               : item.state == QueueState::Done && !item.doubts.empty() ? RowUpdate::LookIcon
                                                                        : appearance.icon;
    if (item.state == QueueState::Cancelled) row.new_name = "";
    if (item.state >= QueueState::Processing) row.new_name = remextension(item.new_name);
    std::string_view status = appearance.status;
    if (item.state == QueueState::Processing) {
      if (!filters.holds(item.filter_index)) return false;
      if (const ActionWords* const words = words_of(item.action)) status = words->at_work;
    }
    if (item.is_planned) {
      row.new_name = remextension(item.new_name);
      status = "To Review";
    }
    if (!status.empty()) row.status = status;
  }
  row.select = true;
  return true;
}

}  // namespace

bool QueueView::update_lv(int index) {
  try {
    if (!queue_.holds(index)) return false;
    RowUpdate row;
    const bool whole = describe(queue_.at(index), filters_, row);
    ui_.update_row(index, row);
    if (!whole) return false;
    ui_.process_events();
    ui_.process_events();
    return true;
  } catch (const Failure&) {
    return false;
  }
}

}  // namespace quorvel
