#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/log.h"
#include "platform/user_interface.h"
#include "rules/record_file.h"
#include "text/cut.h"
#include "text/failure.h"

namespace quorvel {

/// What the filter rules and the exceptions have in common: an ordered list, counted from 1, that lives in a file of
/// records. `Entry` has a flag `deleted`; `Format` gives
///   file_name, plural (the list's name in log lines), field_count,
///   static Fields fields(const Entry&), static Entry entry(const std::vector<std::string_view>&),
///   static ListRow row(const std::vector<Entry>&, std::size_t), without its key, and show, the user interface's call
///   for the rows.
template <typename Entry, typename Format>
class EntryList {
 public:
  EntryList(Files& files, Log& log, UserInterface& ui, const std::string& work_dir)
      : log_(log), ui_(ui), file_(files, work_dir, Format::file_name) {}

  int count() const { return static_cast<int>(entries_.size()); }
  bool holds(int index) const { return index >= 1 && index <= count(); }

  /// `index` is one that the list holds.
  Entry& at(int index) { return entries_.at(static_cast<std::size_t>(index) - 1); }
  const Entry& at(int index) const { return entries_.at(static_cast<std::size_t>(index) - 1); }
  const std::vector<Entry>& entries() const { return entries_; }

  void append(Entry entry) { entries_.push_back(std::move(entry)); }

  /// The only one, for this run: the file stays what it is.
  void use_only(Entry entry) { entries_.assign(1, std::move(entry)); }

  /// Puts an entry in place of the one at `index`, or last for 0, on disk too, and shows the list. False, and nothing
  /// changed, when the file cannot be written.
  bool store(int index, Entry entry) {
    if (index < 1) return insert(count() + 1, std::move(entry));
    std::swap(at(index), entry);
    const bool saved = save();
    if (!saved) std::swap(at(index), entry);
    refresh();
    return saved;
  }

  /// Puts a new entry above the one at `index`, or last, on disk too, and shows the list. False, and nothing changed,
  /// as above.
  bool insert(int index, Entry entry) {
    const auto place = entries_.insert(entries_.begin() + (index - 1), std::move(entry));
    const bool saved = save();
    if (!saved) entries_.erase(place);
    refresh();
    return saved;
  }

  /// Exchanges two entries, on disk too. False, and nothing changed, when an index is not the list's or the file cannot
  /// be written.
  bool exchange(int a, int b) {
    if (!holds(a) || !holds(b)) return false;
    std::swap(at(a), at(b));
    if (save()) return reload();
    std::swap(at(a), at(b));
    return false;
  }

  /// Takes an entry out, on disk too. False, and nothing changed, as above.
  bool remove(int index) {
    if (!holds(index)) return false;
    at(index).deleted = true;
    if (save()) return reload();
    at(index).deleted = false;
    return false;
  }

  /// The list becomes what the file holds. False, with a log line, when a line cannot be understood: the entries
  /// before it stay, and empty ones take its place and that of those after it. Throws Unreadable, and the list stays
  /// what it is, when there may be a file but it cannot be read.
  bool load() {
    const std::optional<std::vector<std::string>> lines =
        file_.exists() ? std::optional(file_.read_lines()) : std::nullopt;
    entries_.clear();
    bool whole = true;
    try {
      if (lines) {
        take_lines(*lines);
      } else {
        entries_ = Format::defaults();
      }
    } catch (const Failure& failure) {
      log_.debug_log(std::string("Error loading ").append(Format::plural).append(": ") + failure.what(),
                     LogLevel::Normal);
      whole = false;
    }
    file_.loaded_as(records());
    refresh();
    return whole;
  }

  /// The file becomes what the list holds, less what is marked deleted; an empty list removes it.
  /// False, with a log line, when that fails; the file is then as it was.
  bool save() {
    try {
      file_.save(records());
      return true;
    } catch (const Failure& failure) {
      log_.debug_log(std::string("Error saving ").append(Format::plural).append(": ") + failure.what(),
                     LogLevel::Normal);
      return false;
    }
  }

  /// Shows the list.
  void refresh() {
    std::vector<ListRow> rows;
    for (std::size_t i = 0; i < entries_.size(); ++i) {
      rows.push_back(Format::row(entries_, i));
      rows.back().key = "F" + std::to_string(i + 1);
    }
    (ui_.*Format::show)(rows);
  }

 protected:
  UserInterface& ui() { return ui_; }

 private:
  std::vector<RecordFile::Fields> records() const {
    std::vector<RecordFile::Fields> records;
    for (const Entry& entry : entries_) {
      if (!entry.deleted) records.push_back(Format::fields(entry));
    }
    return records;
  }

  /// After a save. A file that was just written and cannot be seen is on a drive in trouble: the rules stay what they
  /// are, for with the default ones in their place files would go elsewhere.
  bool reload() {
    std::erase_if(entries_, [](const Entry& entry) { return entry.deleted; });
    std::string trouble = "the file cannot be found";
    try {
      if (entries_.empty() || file_.exists()) return load();
    } catch (const Unreadable& failure) {
      trouble = failure.what();
    }
    log_.debug_log(std::string("Error loading ").append(Format::plural).append(": ") + trouble, LogLevel::Normal);
    refresh();
    return true;
  }

  void take_lines(const std::vector<std::string>& lines) {
    entries_.resize(lines.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
      const std::vector<std::string_view> fields = split(lines[i], "\t");
      const std::string line = "line " + std::to_string(i + 1) + " of " + std::string(Format::file_name);
      if (fields.size() < Format::field_count) {
        throw Failure(line + " has " + std::to_string(fields.size()) + " of " + std::to_string(Format::field_count) +
                      " fields");
      }
      try {
        entries_[i] = Format::entry(fields);
      } catch (const Failure& failure) {
        throw Failure(line + ": " + failure.what());
      }
    }
  }

  Log& log_;
  UserInterface& ui_;
  RecordFile file_;
  std::vector<Entry> entries_;
};

}  // namespace quorvel
