#include "listings/cache_folder.h"

#include "platform/native.h"
#include "platform/temporary_name.h"
#include "text/title.h"
#include "transport/whole_file.h"

namespace quorvel {

std::string CacheFolder::path() const {
  return work_dir_ + "cache";
}

std::string CacheFolder::file(std::string_view name, std::string_view extension) const {
  return path() + native::separator + cleantitle(name) + std::string(extension);
}

std::vector<std::string> CacheFolder::files(std::string_view extension) const {
  std::vector<std::string> found;
  files_.list(path(), [&](const FolderEntry& entry) {
    if (!entry.is_folder && entry.name.ends_with(extension)) found.push_back(path() + native::separator + entry.name);
  });
  return found;
}

std::optional<std::string> CacheFolder::foreign_use() const {
  if (is_link()) return "is a link";
  std::optional<std::string> foreign;
  files_.list(path(), [&](const FolderEntry& entry) {
    const bool is_own = entry.name.ends_with(".qc") || entry.name.ends_with(".epc") ||
                        entry.name.starts_with(temporary_prefix);  // what a crash in the middle of writing has left
    if (entry.is_folder || !is_own) foreign = "holds \"" + entry.name + "\", which is no cache file";
  });
  return foreign;
}

std::string CacheFolder::load(const std::string& file) const {
  return loadfile(files_, file);
}

void CacheFolder::store(const std::string& file, const std::string& text) {
  if (is_link()) return;
  if (!files_.exists(path())) files_.create_folder(path());
  savefile(files_, file, text, false, OldTail::Dropped);
}

bool fits_cache_field(std::string_view text) {
  return text.find_first_of("\t\r\n") == std::string_view::npos;
}

}  // namespace quorvel
