#include "transport/whole_file.h"

#include "text/code_page.h"
#include "text/failure.h"

namespace quorvel {

std::string loadfile(const Files& files, const std::string& path) {
  const std::optional<FileStamp> stamp = files.stamp(path);
  if (!stamp) throw Failure("File not found");
  std::string bytes = files.read(path).value_or(std::string());
  bytes.resize(stamp->size, ' ');
  return from_code_page(bytes);
}

bool savefile(Files& files, const std::string& path, const std::string& text, bool keep_existing, OldTail old_tail) {
  if (keep_existing && files.exists(path)) return false;
  std::string bytes = to_code_page(text);
  if (old_tail == OldTail::Kept && files.exists(path)) {
    const std::optional<std::string> old = files.read(path);
    if (!old) return false;
    if (old->size() > bytes.size()) bytes.append(*old, bytes.size());
  }
  return files.replace(path, bytes);
}

}  // namespace quorvel
