#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <unordered_set>

#include "queue/queue_item.h"

namespace quorvel {

/// The files of this run, counted from 1. Items are appended and never removed or moved, so an index and a
/// reference to an item stay good.
class WorkQueue {
 public:
  int count() const { return static_cast<int>(items_.size()); }
  bool holds(int index) const { return index >= 1 && index <= count(); }

  /// Throw std::out_of_range for an index that the queue does not hold.
  QueueItem& at(int index) { return items_.at(static_cast<std::size_t>(index) - 1); }
  const QueueItem& at(int index) const { return items_.at(static_cast<std::size_t>(index) - 1); }

  /// Whether exactly this path is queued; case matters.
  bool holds_path(std::string_view path) const { return paths_.contains(path); }

  /// It may be queued again, for another file has it now.
  void release(std::string_view path) { paths_.erase(path); }

  /// Appends an inactive item and gives its index.
  int append(std::string path, std::string filename) {
    QueueItem& item = items_.emplace_back();
    item.path = std::move(path);
    item.filename = std::move(filename);
    paths_.insert(item.path);
    return count();
  }

 private:
  std::deque<QueueItem> items_;
  std::unordered_set<std::string_view> paths_;  // views into the items, whose paths never change
};

}  // namespace quorvel
