#include "rules/record_file.h"

#include "text/code_page.h"
#include "text/cut.h"
#include "text/failure.h"
#include "transport/whole_file.h"

namespace quorvel {
namespace {

std::string text_of(const std::vector<RecordFile::Fields>& records) {
  std::string text;
  for (const RecordFile::Fields& fields : records) {
    for (std::size_t i = 0; i < fields.size(); ++i) text.append(i == 0 ? "" : "\t").append(fields[i]);
    text += "\r\n";
  }
  return text;
}

/// A rule whose folder came back as "????" would misplace files, so nothing is written that would not come back.
void check(const RecordFile::Fields& fields) {
  for (const std::string& field : fields) {
    if (field.find_first_of(std::string_view("\t\r\n\0", 4)) != std::string::npos) {
      throw Failure("\"" + field + "\" holds a tab or a line break");
    }
    if (!fits_code_page(field)) {
      throw Failure("\"" + field + "\" holds a character outside the Western European code page");
    }
  }
}

}  // namespace

RecordFile::RecordFile(Files& files, const std::string& folder, std::string_view name)
    : files_(files), folder_(folder), name_(name) {}

bool RecordFile::exists() const {
  return files_.exists(path());
}

std::vector<std::string> RecordFile::read_lines() const {
  const std::optional<std::string> bytes = files_.read(path());
  if (!bytes) throw Unreadable("The file " + path() + " cannot be read; with other rules files would go elsewhere");
  const std::string text = from_code_page(*bytes);
  const std::vector<std::string_view> pieces = split(text, "\r\n");
  return {pieces.begin(), pieces.end() - 1};
}

void RecordFile::loaded_as(const std::vector<Fields>& records) {
  known_ = to_code_page(text_of(records));
}

void RecordFile::save(const std::vector<Fields>& records) {
  for (const Fields& fields : records) check(fields);
  if (exists()) {
    const std::optional<std::string> bytes = files_.read(path());
    if (!bytes) throw Failure(path() + " cannot be read, so it is not replaced");
    if (*bytes != known_) keep_copy(*bytes);
  }
  const std::string text = text_of(records);
  if (text.empty()) {
    if (exists() && !files_.remove(path())) throw Failure(path() + " cannot be removed");
  } else if (!savefile(files_, path(), text, false, OldTail::Dropped)) {
    throw Failure(path() +
                  (files_.is_link(path()) ? " is a link, and nothing is written through links" : " cannot be written"));
  }
  known_ = to_code_page(text);
}

void RecordFile::keep_copy(const std::string& bytes) {
  for (int number = 1;; ++number) {
    const std::string copy = path() + ".bak" + (number == 1 ? "" : std::to_string(number));
    if (files_.read(copy) == bytes) return;
    if (files_.exists(copy)) continue;
    if (!files_.replace(copy, bytes)) throw Failure(copy + " cannot be written");
    return;
  }
}

}  // namespace quorvel
