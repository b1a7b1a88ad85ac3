#include "shell/dialogs.h"

#include "naming/file_names.h"
#include "naming/reader/reading_text.h"
#include "text/characters.h"
#include "text/cut.h"

namespace quorvel {
namespace {

constexpr std::string_view dots = "...";

std::string skip_name(int message) {
  return "msgskip$" + std::to_string(message);
}

constexpr std::string_view read_as = "Read as: ";

/// In days as the user counts them.
std::string age_text(std::chrono::sys_seconds told, const Clock& clock) {
  const auto day = [&clock](std::chrono::sys_seconds moment) {
    return std::chrono::floor<std::chrono::days>(clock.local(moment));
  };
  const auto days = (day(std::chrono::floor<std::chrono::seconds>(clock.utc())) - day(told)).count();
  return days < 1 ? "of today" : days == 1 ? "of yesterday" : std::to_string(days) + " days old";
}

/// How the item came to its name, or to fail.
std::string remarks(const QueueItem& item, const Clock& clock) {
  std::string text;
  const auto add = [&text](const std::string& line) { text.append(text.empty() ? "" : "\n").append(line); };
  if (item.reading && item.reading->names_episode()) {
    add(std::string(read_as) + show_text(*item.reading) + ", " + number_text(*item.reading) +
        (item.reading->certain ? "" : " (not certain)"));
  }
  if (item.state == QueueState::Done && !item.companions.empty()) {
    const std::size_t count = item.companions.size();
    add(count == 1 ? "1 companion went along" : std::to_string(count) + " companions went along");
  }
  if (!item.match.empty()) add("Match: " + item.match);
  if (item.listings_told) add("Listings " + age_text(*item.listings_told, clock));
  for (const std::string& doubt : item.doubts) {
    if (item.error_text.find(doubt) == std::string::npos) add("Look at this: " + doubt);
  }
  return text;
}

/// Why the item failed or was cancelled, and what is known of it beside that.
std::string explained(const char* label, const QueueItem& item, const std::string& remarks) {
  std::string error = item.error_text;
  replace_all(error, "\r\n", "\n");
  std::string text = label;
  for (const std::string_view line : split(error, "\n")) {
    if (item.reading && line.starts_with(read_as)) continue;  // the remarks tell more of that
    text.append(text == label ? "" : "\n").append(line);
  }
  return remarks.empty() ? text : text + "\n" + remarks;
}

void describe(const QueueItem& item, const std::string& remarks, ItemInfo& info) {
  switch (item.state) {
    case QueueState::Cancelled:
      info.status = "Status: Cancelled";
      info.description = explained("Desc: ", item, remarks);
      break;
    case QueueState::Failed:
      info.status = "Status: Failed";
      info.description = explained("Error: ", item, remarks);
      break;
    case QueueState::Done:
      info.status = "Status: Done";
      info.new_name = "New Name: " + item.new_name;
      info.description = remarks;
      break;
    default:
      return;
  }
  info.filename = "Filename: " + item.filename;
}

}  // namespace

std::string page_address(const std::string& address) {
  return address.find("://") == std::string::npos ? "" : address;
}

void open_page(Launcher& launcher, UserInterface& ui, const std::string& address) {
  if (launcher.open(address)) return;
  ui.show_message(0, "Unable to open page", "There is no program to open " + address + " with", MessageIcon::Warning);
}

void open_folder(Launcher& launcher, UserInterface& ui, const Files& files, const std::string& folder) {
  if (launcher.open(folder)) return;
  ui.show_message(0, "Unable to open folder",
                  files.exists(folder) ? "There is no program to open " + folder + " with"
                                       : "The folder " + folder + " is not there any more",
                  MessageIcon::Warning);
}

ItemInfo item_info(const QueueItem& item, const Clock& clock) {
  ItemInfo info;
  describe(item, remarks(item, clock), info);
  info.old_path = item.path;
  if (item.state != QueueState::Cancelled && !item.new_name.empty()) info.new_path = job_of(item).destination();
  info.show_address = page_address(item.show_url);
  info.episode_address = page_address(item.episode_url);
  return info;
}

std::string folder_of(const QueueItem& item, const Files& files) {
  // Before that, the file at the destination may be another one.
  const bool is_there =
      item.state == QueueState::Done || (!files.exists(item.path) && files.exists(job_of(item).destination()));
  return is_there ? item.dest_path : getpath(item.path, 0);
}

std::string fitted(const std::string& text, int width, const std::function<int(const std::string&)>& measure) {
  std::u32string start = decode(text);
  std::string shown = text;
  for (bool is_cut = false; measure(shown) >= width && shown != dots; is_cut = true) {
    if (is_cut) start.pop_back();
    shown = encode(start).append(dots);
  }
  return shown;
}

std::string message_lines(std::string text) {
  replace_all(text, "#", "\n");
  return text;
}

bool is_switched_off(const SettingsStore& store, int message) {
  return message >= 1 && store.read_number(skip_name(message)) != 0;
}

void switch_off(SettingsStore& store, int message) {
  store.write_number(skip_name(message), 1);
}

NewException add_exception(ExceptionList& exceptions, UserInterface& ui, const std::string& detected_name,
                           const std::string& new_name) {
  if (detected_name.empty()) {
    ui.show_message(0, "Detected Name Required", "Please enter a detected show name", MessageIcon::Information);
    return NewException::NoDetectedName;
  }
  if (new_name.empty()) {
    ui.show_message(0, "New Name Required", "Please enter a new show name", MessageIcon::Information);
    return NewException::NoNewName;
  }
  if (!exceptions.store(0, {detected_name, new_name, false})) {
    ui.show_message(0, "Unable to save exception", "The exception could not be saved. The log says why.",
                    MessageIcon::Error);
    return NewException::NotSaved;
  }
  return NewException::Added;
}

}  // namespace quorvel
