#include "watch/downloads.h"

#include <algorithm>
#include <array>

#include "text/case.h"
#include "text/wildcard.h"

namespace quorvel {
namespace {

/// As wildcards, in small letters.
constexpr auto folders = std::to_array<std::string_view>({".*", "$recycle.bin", "#recycle", "@recycle", "@eadir",
                                                          "recycler", "system volume information", "lost+found",
                                                          "incomplete", "_unpack_*", "_failed_*"});

/// What programs append to the name of what they have not fetched whole; or to that of a note of how far they are.
constexpr auto endings = std::to_array<std::string_view>(
    {".part", ".partial", ".!qB", ".!ut", ".!bt", ".bc!", ".crdownload", ".opdownload", ".download", ".unfinished",
     ".incomplete", ".tmp", ".temp", ".aria2", ".ytdl", ".filepart", ".st"});

}  // namespace

bool is_passed_over_as_folder(std::string_view name) {
  const std::string small = lower_case(name);
  return std::ranges::any_of(folders, [&](std::string_view pattern) { return matches(small, std::string(pattern)); });
}

bool is_passed_over_as_file(std::string_view name) {
  const std::string small = lower_case(name);
  return name.starts_with('.') ||
         std::ranges::any_of(endings, [&](std::string_view ending) { return small.ends_with(lower_case(ending)); });
}

bool has_partial_beside(const Files& files, const std::string& path) {
  return std::ranges::any_of(endings,
                             [&](std::string_view ending) { return files.exists(path + std::string(ending)); });
}

}  // namespace quorvel
