#include "rules/record_file.h"

#include "text/code_page.h"
#include "text/cut.h"
#include "text/failure.h"

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

constexpr std::string_view utf8_mark = "\xEF\xBB\xBF";

/// In the code page where it holds every character, else in UTF-8 with the mark of that: a rule whose folder came back
/// as
/// "????" would misplace files.
std::string bytes_of(const std::string& text) {
  std::string bytes = to_code_page(text);
  return fits_code_page(text) && !bytes.starts_with(utf8_mark) ? bytes : std::string(utf8_mark) + text;
}

std::string text_in(std::string_view bytes) {
  return bytes.starts_with(utf8_mark) ? std::string(bytes.substr(utf8_mark.size())) : from_code_page(bytes);
}

void check(const RecordFile::Fields& fields) {
  for (const std::string& field : fields) {
    if (field.find_first_of(std::string_view("\t\r\n\0", 4)) != std::string::npos) {
      throw Failure("\"" + field + "\" holds a tab or a line break");
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
  const std::string text = text_in(*bytes);
  const std::vector<std::string_view> pieces = split(text, "\r\n");
  return {pieces.begin(), pieces.end() - 1};
}

void RecordFile::loaded_as(const std::vector<Fields>& records) {
  known_ = bytes_of(text_of(records));
}

void RecordFile::save(const std::vector<Fields>& records) {
  for (const Fields& fields : records) check(fields);
  if (exists()) {
    const std::optional<std::string> bytes = files_.read(path());
    if (!bytes) throw Failure(path() + " cannot be read, so it is not replaced");
    if (*bytes != known_) keep_copy(*bytes);
  }
  const std::string bytes = bytes_of(text_of(records));
  if (bytes.empty()) {
    if (exists() && !files_.remove(path())) throw Failure(path() + " cannot be removed");
  } else if (!files_.replace(path(), bytes)) {
    throw Failure(path() +
                  (files_.is_link(path()) ? " is a link, and nothing is written through links" : " cannot be written"));
  }
  known_ = bytes;
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
