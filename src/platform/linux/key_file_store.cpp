#include "platform/linux/key_file_store.h"

#include <glib.h>
#include <unistd.h>

#include <charconv>
#include <utility>

#include "platform/linux/folders.h"
#include "text/failure.h"

namespace quorvel {
namespace {

constexpr const char* group = "Settings";

std::string key_of(const std::string& name) {
  return name.empty() ? "version" : name;
}

bool is_utf8(const std::string& text) {
  return g_utf8_validate_len(text.data(), text.size(), nullptr) != FALSE;
}

/// Whether the file's syntax would give the key back as it is.
bool is_key(const std::string& key) {
  for (const char character : key) {
    if (character == '=' || character == '[' || character == ']' || static_cast<unsigned char>(character) < ' ') {
      return false;
    }
  }
  return is_utf8(key) && key.front() != '#' && key.front() != ' ' && key.back() != ' ';
}

std::string text_of(const KeyValueStore::Value& value) {
  if (const auto* const number = std::get_if<std::uint32_t>(&value)) return std::to_string(*number);
  const std::string& text = std::get<std::string>(value);
  return text.substr(0, text.find('\0'));
}

template <class Number>
std::optional<std::uint32_t> whole_number(const std::string& text) {
  Number number = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stopped != end) return {};
  return static_cast<std::uint32_t>(number);
}

}  // namespace

struct KeyFileStore::Values {
  Values() = default;
  Values(const Values&) = delete;
  Values& operator=(const Values&) = delete;
  ~Values() { g_key_file_free(file); }

  GKeyFile* file = g_key_file_new();
};

KeyFileStore::KeyFileStore(Files& files, std::string path) : files_(files), path_(std::move(path)), values_(load()) {}

KeyFileStore::~KeyFileStore() = default;

std::unique_ptr<KeyFileStore::Values> KeyFileStore::load() {
  auto values = std::make_unique<Values>();
  trouble_.reset();
  if (!files_.exists(path_)) return values;
  const std::optional<std::string> text = files_.read(path_);
  if (!text) {
    trouble_ = "The settings file " + path_ + " cannot be read";
  } else if (text->find('\0') != std::string::npos) {
    // GLib would cut the line there, and the rest of it would be gone with the next write.
    trouble_ = "The settings file " + path_ + " is damaged: it holds a NUL character";
  } else {
    g_autoptr(GError) error = nullptr;
    const auto flags = static_cast<GKeyFileFlags>(G_KEY_FILE_KEEP_COMMENTS | G_KEY_FILE_KEEP_TRANSLATIONS);
    if (g_key_file_load_from_data(values->file, text->data(), text->size(), flags, &error) != FALSE) return values;
    trouble_ = "The settings file " + path_ + " is damaged: " + error->message;
  }
  return std::make_unique<Values>();
}

std::optional<std::string> KeyFileStore::read_string(const std::string& name) const {
  const std::string key = key_of(name);
  if (!is_key(key)) return {};
  g_autofree char* text = g_key_file_get_string(values_->file, group, key.c_str(), nullptr);
  if (text == nullptr) return {};
  return text;
}

std::optional<std::uint32_t> KeyFileStore::read_number(const std::string& name) const {
  const std::optional<std::string> text = read_string(name);
  if (!text) return {};
  return text->starts_with('-') ? whole_number<std::int32_t>(*text) : whole_number<std::uint32_t>(*text);
}

void KeyFileStore::write(const std::vector<Named>& values) {
  std::unique_ptr<Values> current = load();
  if (trouble_) {
    values_ = std::move(current);
    throw Failure(*trouble_);
  }
  for (const auto& [name, value] : values) {
    const std::string key = key_of(name), text = text_of(value);
    if (!is_key(key)) throw Failure("\"" + name + "\" cannot be the name of a setting");
    if (!is_utf8(text)) throw Failure("The setting \"" + key + "\" cannot be stored: its text is not UTF-8");
    g_key_file_set_string(current->file, group, key.c_str(), text.c_str());
  }
  gsize size = 0;
  g_autofree char* bytes = g_key_file_to_data(current->file, &size, nullptr);
  if (!create_folders(files_, parent_folder(path_)) || !files_.replace(path_, std::string(bytes, size))) {
    throw Failure("The settings file " + path_ + " cannot be written");
  }
  values_ = std::move(current);
}

void KeyFileStore::erase_all() {
  if (!files_.remove(path_)) throw Failure("The settings file " + path_ + " cannot be removed");
  // This removes nothing but an empty folder, and no link to one.
  rmdir(parent_folder(path_).c_str());
  values_ = load();
}

}  // namespace quorvel
