#include <glib.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/folders.h"
#include "platform/system.h"
#include "platform/temporary_name.h"
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

using Values = std::unique_ptr<GKeyFile, void (*)(GKeyFile*)>;

Values no_values() {
  return {g_key_file_new(), g_key_file_free};
}

/// Settings in a key file, read once: one group "Settings", the unnamed value under the key "version". What else stands
/// in the file, comments included, is kept.
class KeyFileStore : public KeyValueStore {
 public:
  KeyFileStore(Files& files, std::string path) : files_(files), path_(std::move(path)), values_(load()) { clear_up(); }

  /// There are no values then, and nothing is written, so that the user can mend the file.
  std::optional<std::string> trouble() const override { return trouble_; }

  std::optional<std::string> read_string(const std::string& name) const override {
    const std::string key = key_of(name);
    if (!is_key(key)) return {};
    g_autofree char* text = g_key_file_get_string(values_.get(), group, key.c_str(), nullptr);
    if (text == nullptr) return {};
    return text;
  }

  /// Empty as well when the text is not wholly a 32-bit number; a negative one is read as its two's complement.
  std::optional<std::uint32_t> read_number(const std::string& name) const override {
    const std::optional<std::string> text = read_string(name);
    if (!text) return {};
    return text->starts_with('-') ? whole_number<std::int32_t>(*text) : whole_number<std::uint32_t>(*text);
  }

  /// What another process has written to the file meanwhile is kept. A text is stored up to its first NUL.
  void write(const std::vector<Named>& values) override {
    Values current = load();
    if (trouble_) {
      values_ = std::move(current);
      throw Failure(*trouble_);
    }
    for (const auto& [name, value] : values) {
      const std::string key = key_of(name), text = text_of(value);
      if (!is_key(key)) throw Failure("\"" + name + "\" cannot be the name of a setting");
      if (!is_utf8(text)) throw Failure("The setting \"" + key + "\" cannot be stored: its text is not UTF-8");
      g_key_file_set_string(current.get(), group, key.c_str(), text.c_str());
    }
    g_autofree char* bytes = g_key_file_to_data(current.get(), nullptr, nullptr);
    if (!create_folders(files_, parent_folder(path_)) || !files_.replace(path_, bytes)) {
      throw Failure(
          "The settings file " + path_ +
          (files_.is_link(path_) ? " is a link, and nothing is written through links" : " cannot be written"));
    }
    values_ = std::move(current);
  }

  /// Removes the file, also one that could not be understood, and its folder when nothing else is in it.
  void erase_all() override {
    if (!files_.remove(path_)) throw Failure("The settings file " + path_ + " cannot be removed");
    // This removes nothing but an empty folder, and no link to one.
    rmdir(parent_folder(path_).c_str());
    values_ = load();
  }

 private:
  /// Removes what processes have left that were killed as they wrote. What is younger may be another's that is writing.
  void clear_up() {
    const std::string folder = parent_folder(path_) + "/";
    std::vector<std::string> old;
    const auto long_ago = std::chrono::system_clock::now() - std::chrono::days(1);
    files_.list(folder, [&](const FolderEntry& entry) {
      if (entry.is_folder || entry.is_link || !entry.name.starts_with(temporary_prefix)) return;
      const std::optional<FileStamp> stamp = files_.stamp(folder + entry.name);
      if (stamp && std::chrono::nanoseconds(stamp->modified_ns) < long_ago.time_since_epoch()) {
        old.push_back(folder + entry.name);
      }
    });
    for (const std::string& path : old) files_.remove(path);
  }

  /// The file as it is now; without values, and trouble_ set, when it cannot be understood.
  Values load() {
    Values values = no_values();
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
      if (g_key_file_load_from_data(values.get(), text->data(), text->size(), flags, &error) != FALSE) return values;
      trouble_ = "The settings file " + path_ + " is damaged: " + error->message;
    }
    return no_values();
  }

  Files& files_;
  const std::string path_;
  std::optional<std::string> trouble_;
  Values values_;
};

}  // namespace

std::unique_ptr<KeyValueStore> system_key_values(Files& files, const std::string& name) {
  return std::make_unique<KeyFileStore>(files, standard_folders::settings() + "/" + name + "/settings.ini");
}

}  // namespace quorvel
