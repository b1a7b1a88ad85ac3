#include "queue/companions.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "naming/file_names.h"
#include "naming/reader/reading.h"
#include "naming/service_names.h"
#include "rules/action.h"
#include "text/characters.h"
#include "text/cut.h"
#include "text/failure.h"

namespace quorvel {
namespace {

constexpr std::string_view delimiters = ".-_ [(";

/// How media servers want languages; discs and releases spell them out.
constexpr std::pair<std::string_view, std::string_view> languages[] = {
    {"english", "en"},  {"german", "de"},   {"deutsch", "de"},   {"french", "fr"},    {"spanish", "es"},
    {"italian", "it"},  {"dutch", "nl"},    {"danish", "da"},    {"swedish", "sv"},   {"norwegian", "no"},
    {"finnish", "fi"},  {"polish", "pl"},   {"russian", "ru"},   {"ukrainian", "uk"}, {"portuguese", "pt"},
    {"czech", "cs"},    {"slovak", "sk"},   {"hungarian", "hu"}, {"greek", "el"},     {"turkish", "tr"},
    {"arabic", "ar"},   {"hebrew", "he"},   {"japanese", "ja"},  {"korean", "ko"},    {"chinese", "zh"},
    {"romanian", "ro"}, {"croatian", "hr"}, {"serbian", "sr"},   {"bulgarian", "bg"}};

/// Of a video; a name without an extension is none's.
std::string_view stem_of(std::string_view name) {
  return name.substr(0, std::min(name.rfind('.'), name.size()));
}

/// "2_English (SDH)", as a disc's tracks are named, becomes ".en.SDH".
std::string addition_of(std::string_view track) {
  std::string addition;
  for (std::size_t at = 0, end = 0; at < track.size(); at = end + 1) {
    end = std::min(track.find_first_of("._- ()[]", at), track.size());
    std::string_view word = track.substr(at, end - at);
    const bool is_number = std::ranges::all_of(word, is_digit);
    if (word.empty() || (at == 0 && is_number && end < track.size())) continue;
    for (const auto& [name, code] : languages) {
      if (lower_ascii(word) == name) word = code;
    }
    addition.append(".").append(word);
  }
  return addition;
}

}  // namespace

/// For the companions of one video.
class Companions::Search {
 public:
  Search(Companions& all, const FileJob& video)
      : all_(all),
        video_(video),
        from_(getpath(video.path, 0)),
        stem_(stem_of(video.filename)),
        new_stem_(stem_of(video.new_name)),
        videos_(all.folder(from_).videos),
        has_number_(read_name(stem_).has_numbers()) {
    const std::string endings = lower_ascii(all.settings_.companions);
    for (const std::string_view each : split(endings, ";")) {
      std::string_view ending = trim(each);
      while (ending.starts_with('.')) ending.remove_prefix(1);
      if (!ending.empty()) endings_.push_back("." + std::string(ending));
    }
  }

  std::vector<FileJob> run() {
    take_from(from_);
    for (const auto& [key, name] : all_.folder(from_).folders) {
      if (key != "subs" && key != "subtitles") continue;
      const std::string subs = with_separator(from_ + name);
      take_from(subs);
      const auto [first, last] = all_.folder(subs).folders.equal_range(lower_ascii(stem_));
      for (auto own = first; own != last; ++own) take_all(with_separator(subs + own->second));
    }
    return std::move(found_);
  }

 private:
  /// The files that carry the video's name.
  void take_from(const std::string& folder) {
    const std::string key = lower_ascii(stem_);
    const auto& files = all_.folder(folder).files;
    for (auto at = files.lower_bound(key); at != files.end() && at->first.starts_with(key); ++at) {
      const std::string addition = at->second.substr(stem_.size());
      if (is_addition(addition) && is_ours(at->second)) take(folder + at->second, addition);
    }
  }

  /// A folder of the video's own. A track whose name is taken is numbered, from 2 on; the files of one track stay
  /// together.
  void take_all(const std::string& folder) {
    std::map<std::string, std::string> tracks;  // by their names
    for (const auto& [key, name] : all_.folder(folder).files) {
      const std::string ending = ending_of(key);
      if (ending.empty()) continue;
      const std::string track = key.substr(0, key.size() - ending.size());
      if (!tracks.contains(track)) {
        const std::string plain = addition_of(name.substr(0, track.size()));
        std::string addition = plain;
        for (int number = 2; used_.contains(lower_ascii(addition)); ++number) {
          addition = plain + "." + std::to_string(number);
        }
        tracks[track] = addition;
      }
      take(folder + name, tracks[track] + name.substr(track.size()));
    }
  }

  void take(const std::string& path, const std::string& addition) {
    if (all_.queue_.holds_path(path) || all_.files_.kind(path) != Files::Kind::File) return;
    used_.insert(lower_ascii(stem_of(addition)));
    FileJob job{path, getfname(path), new_stem_ + addition, video_.dest_path, video_.action};
    if (const auto trouble = name_trouble(job.new_name)) throw Failure("The new name of " + path + " " + *trouble);
    if (job.action == Rename && getpath(path, 0) != job.dest_path) job.action = MoveAndRename;
    if (path != job.destination()) found_.push_back(std::move(job));
  }

  std::string ending_of(std::string_view key) const {
    for (const std::string& ending : endings_) {
      if (key.ends_with(ending)) return ending;
    }
    return {};
  }

  /// What names another episode is that one's: "Show.mkv" has no "Show.S01E02.srt", nor "Show 2.srt".
  bool is_addition(const std::string& addition) const {
    const std::string ending = ending_of(lower_ascii(addition));
    if (ending.empty() || delimiters.find(addition.front()) == std::string_view::npos) return false;
    const std::string middle = addition.substr(0, addition.size() - ending.size());
    if (middle.size() < 2) return true;
    if (is_digit(middle[1])) return (middle[0] == '.' && has_number_) || middle[0] == '(' || middle[0] == '[';
    const Reading reading = read_name("Show" + middle);
    return reading.episodes.empty() && !reading.date;
  }

  /// Whether no video's name fits better: a longer one, or among those of this length one with the same capitals, one
  /// that is in the queue, or simply the first.
  bool is_ours(const std::string& name) const {
    const std::string key = lower_ascii(name);
    for (std::size_t length = stem_.size() + 1; length < key.size(); ++length) {
      const bool is_end = delimiters.find(key[length]) != std::string_view::npos;
      const auto [first, last] =
          is_end ? videos_.equal_range(key.substr(0, length)) : std::pair(videos_.end(), videos_.end());
      if (std::any_of(first, last, [&](const auto& video) { return video.second != name; })) return false;
    }
    const auto [first, last] = videos_.equal_range(lower_ascii(stem_));
    const auto rank = [&](const std::string& video) {
      return std::pair(name.starts_with(stem_of(video)), all_.queue_.holds_path(from_ + video));
    };
    return std::none_of(first, last, [&](const auto& video) {
      const auto other = rank(video.second), own = rank(video_.filename);
      return other > own || (other == own && video.second < video_.filename && video.second != name);
    });
  }

  Companions& all_;
  const FileJob& video_;
  const std::string from_, stem_, new_stem_;
  const std::multimap<std::string, std::string>& videos_;
  const bool has_number_;
  std::vector<std::string> endings_;
  std::vector<FileJob> found_;
  std::set<std::string> used_;  // additions without their endings, in small letters
};

std::vector<FileJob> Companions::of(const FileJob& video) {
  if (settings_.companions.empty()) return {};
  return Search(*this, video).run();
}

const Companions::Folder& Companions::folder(const std::string& path) {
  const auto [place, is_new] = folders_.try_emplace(path);
  Folder& found = place->second;
  if (!is_new) return found;
  files_.list(path, [&](const FolderEntry& entry) {
    const std::string key = lower_ascii(entry.name);
    if (entry.is_folder) {
      if (!entry.is_link) found.folders.emplace(key, entry.name);
      return;
    }
    found.files.emplace(key, entry.name);
    const bool has_extension = stem_of(key).size() < key.size();
    if (has_extension && (is_listed(settings_, key) || queue_.holds_path(path + entry.name))) {
      found.videos.emplace(stem_of(key), entry.name);
    }
  });
  return found;
}

std::string renamed_with(const std::string& companion, const std::string& video, const std::string& new_video) {
  return std::string(stem_of(new_video)) + companion.substr(stem_of(video).size());
}

}  // namespace quorvel
