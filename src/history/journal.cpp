#include "history/journal.h"

#include <algorithm>

#include "naming/file_names.h"
#include "platform/stamp_text.h"
#include "platform/temporary_name.h"
#include "text/cut.h"

namespace quorvel {
namespace {

constexpr std::string_view prefix = "pending-";
constexpr std::string_view nul("\0", 1);
constexpr std::size_t fields_per_entry = 5;
constexpr std::size_t block = 512;  // filled with NULs, so that an entry mostly takes the place of the one before
constexpr std::size_t new_or_old = std::string_view("new ").size();
constexpr std::int64_t hour_ns = 3'600'000'000'000;

}  // namespace

Journal::~Journal() {
  close();
}

/// No path holds a NUL. What a power cut has left of an entry lacks its last field, and nothing had begun then.
std::string Journal::text_of(const std::vector<Entry>& entries) {
  std::string text;
  for (const auto& [operation, source, destination, temporary, is_new, stamp] : entries) {
    for (const std::string& field : {std::to_string(operation), source, destination, temporary}) {
      text.append(field).append(nul);
    }
    text.append(is_new ? "new" : "old");
    if (stamp) text.append(" " + stamp_text(*stamp));
    text.append(nul);
  }
  text.resize((text.size() / block + 1) * block);
  return text;
}

std::vector<Journal::Entry> Journal::entries_of(std::string_view text) {
  const std::vector<std::string_view> fields = split(text, nul);
  std::vector<Entry> entries;
  for (std::size_t at = 0; at + fields_per_entry < fields.size() && !fields[at].empty(); at += fields_per_entry) {
    const int operation = fields[at].size() == 1 ? fields[at].front() - '0' : 0;
    const std::string_view last = fields[at + 4];
    entries.push_back({operation, std::string(fields[at + 1]), std::string(fields[at + 2]), std::string(fields[at + 3]),
                       last.starts_with("new"), stamp_in(last.substr(std::min(last.size(), new_or_old)))});
  }
  return entries;
}

bool Journal::open() {
  for (int attempt = 0; attempt < 10 && !file_; ++attempt) {
    path_ = work_dir_ + std::string(prefix) + random_letters();
    if (!files_.exists(path_)) file_ = files_.hold(path_);
  }
  return file_ != nullptr;
}

void Journal::close() {
  if (file_ && entries_.empty()) file_->remove();
  file_.reset();
}

bool Journal::is_to_another_device(const Entry& entry) const {
  const std::optional<FileStamp> folder = files_.stamp(getpath(entry.destination, 0));
  return entry.stamp && folder && entry.stamp->device != folder->device;
}

void Journal::begin(const FileOperationRequest& request, const std::optional<FileStamp>& source) {
  // Nobody gives a file a new name before he has seen that it is free.
  const bool is_new = request.operation == FileOperationRequest::Rename || !files_.exists(request.destination);
  entries_.push_back({request.operation, request.source, request.destination, request.temporary, is_new, source});
  if (!files_.are_real() || has_failed_) return;
  // Where all happens within a few calls, a power cut in between is not worth the wait for the disk each time.
  const bool takes_long = request.operation == FileOperationRequest::Copy ||
                          (request.operation == FileOperationRequest::Move && is_to_another_device(entries_.back()));
  if ((file_ || open()) && file_->write(text_of(entries_), takes_long)) return;
  has_failed_ = true;
  log_.debug_log("No journal can be kept in " + work_dir_, LogLevel::Verbose);
}

void Journal::end() {
  const Entry& last = entries_.back();
  const std::string aside = aside_of(last);
  if (!last.temporary.empty() && aside != last.temporary && files_.exists(aside)) {
    log_.debug_log("The name of " + last.source + " has been taken; the file is " + aside + " now", LogLevel::Normal);
  }
  if (!is_left(last)) entries_.pop_back();
  if (file_) file_->write(text_of(entries_), false);
}

/// Whether something of ours may still be there, or its drive has gone away under us.
bool Journal::is_left(const Entry& entry) const {
  if (entry.temporary.empty()) return false;
  return files_.exists(entry.temporary) || files_.exists(aside_of(entry)) ||
         !files_.exists(getpath(entry.temporary, 0));
}

std::vector<std::string> Journal::names_in(const std::string& folder, std::string_view prefix) const {
  std::vector<std::string> names;
  files_.list(folder, [&](const FolderEntry& entry) {
    if (!entry.is_folder && !entry.is_link && entry.name.starts_with(prefix)) names.push_back(entry.name);
  });
  return names;
}

void Journal::settle() {
  for (const std::string& name : names_in(work_dir_, prefix)) {
    const std::unique_ptr<HeldFile> old = files_.hold(work_dir_ + name);
    if (!old) continue;
    std::vector<Entry> left;
    for (const Entry& entry : entries_of(old->read())) {
      settle(entry);
      if (is_left(entry)) left.push_back(entry);
    }
    if (left.empty()) {
      old->remove();
    } else {
      old->write(text_of(left), true);
    }
  }
  remove_old_temporaries(work_dir_);
  if (!files_.is_link(work_dir_ + "cache")) remove_old_temporaries(work_dir_ + "cache" + native::separator);
}

void Journal::settle(const Entry& entry) {
  const bool has_source = files_.exists(entry.source);
  const bool is_link = FileOperationRequest{.operation = entry.operation}.makes_link();  // whole as soon as it is there
  if (!entry.temporary.empty() && files_.exists(entry.temporary)) {
    if (has_source || has_arrived(entry)) {
      remove(entry.temporary, "the beginning of a copy of " + entry.source);
    } else {
      log_.debug_log(entry.temporary + " was left by a run that was cut off. It may be the last copy of " +
                         entry.source + ", which is gone, so it stays",
                     LogLevel::Normal);
    }
  }
  if (has_source && entry.is_new && !is_link) settle_destination(entry);
  if (entry.operation == FileOperationRequest::Move && !entry.temporary.empty()) settle_aside(entry);
}

/// Another run that was at the same file has moved it to where this one would have.
bool Journal::has_arrived(const Entry& entry) const {
  const std::optional<FileStamp> now = files_.stamp(entry.destination);
  return now && entry.stamp && now->may_be_copy_of(*entry.stamp);
}

std::string Journal::aside_of(const Entry& entry) {
  return FileOperationRequest{entry.operation, entry.source, entry.destination, 0, entry.temporary}.source_aside();
}

/// The source under the name that it has for the instant before it is removed.
void Journal::settle_aside(const Entry& entry) {
  const std::string path = aside_of(entry);
  const std::optional<FileStamp> aside = files_.stamp(path), source = files_.stamp(entry.source),
                                 copy = files_.stamp(entry.destination);
  if (!aside || path == entry.temporary) return;
  if (source && ((aside->same_file(*source) && aside->links > 1) || aside->size == 0)) {
    remove(path, "a second name of " + entry.source);
  } else if (copy && aside->may_be_copy_of(*copy)) {
    remove(path, "the rest of " + entry.source + ", which has been moved,");
  } else {
    log_.debug_log(path + " was left by a run that was cut off. It holds what " + entry.source + " held, so it stays",
                   LogLevel::Normal);
  }
}

void Journal::settle_destination(const Entry& entry) {
  const std::optional<FileStamp> source = files_.stamp(entry.source), now = files_.stamp(entry.destination);
  if (!source || !now) return;
  if (source->same_file(*now)) {
    // With one link, both paths lead to the one name that the file has.
    if (now->links > 1) remove(entry.destination, "a second name of " + entry.source);
  } else if (now->size == 0 && source->size > 0) {
    remove(entry.destination, "an empty file that kept the name for " + entry.source);
  } else if (entry.operation == FileOperationRequest::Move && now->size == source->size) {
    log_.debug_log(entry.source + " and " + entry.destination +
                       " are both there: a run was cut off after it had copied the first, and before it removed it",
                   LogLevel::Normal);
  }
}

void Journal::remove(const std::string& path, const std::string& what) {
  const bool removed = files_.remove(path);
  log_.debug_log(
      (removed ? "Removed " : "Unable to remove ") + path + ", " + what + " that a run has left which was cut off",
      LogLevel::Normal);
}

/// Rules, caches and settings are written within an instant, so an old one is nobody's any more.
void Journal::remove_old_temporaries(const std::string& folder) {
  const std::vector<std::string> names = names_in(folder, temporary_prefix);
  if (names.empty() || !open()) return;
  const std::optional<FileStamp> now = files_.stamp(path_);  // by the clock of the drive
  close();
  for (const std::string& name : names) {
    const std::optional<FileStamp> stamp = files_.stamp(folder + name);
    if (!now || !stamp || stamp->modified_ns > now->modified_ns - hour_ns) continue;
    remove(folder + name, "a part of a file");
  }
}

}  // namespace quorvel
