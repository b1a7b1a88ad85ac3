#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/files.h"
#include "platform/key_value_store.h"

namespace quorvel {

/// Settings in a key file: one group "Settings", the unnamed value under the key "version". What else stands in the
/// file, comments included, is kept.
class KeyFileStore : public KeyValueStore {
 public:
  /// Reads the file once; without one there are no values. `files` outlives the store.
  KeyFileStore(Files& files, std::string path);
  ~KeyFileStore() override;
  KeyFileStore(const KeyFileStore&) = delete;
  KeyFileStore& operator=(const KeyFileStore&) = delete;

  /// Why the file that is there could not be understood, in words naming it; empty when all is well. There are no
  /// values then, and nothing is written, so that the user can mend the file.
  std::optional<std::string> trouble() const override { return trouble_; }

  std::optional<std::string> read_string(const std::string& name) const override;

  /// Empty as well when the text is not wholly a 32-bit number; a negative one is read as its two's complement.
  std::optional<std::uint32_t> read_number(const std::string& name) const override;

  /// What another process has written to the file meanwhile is kept. A text is stored up to its first NUL.
  void write(const std::vector<Named>& values) override;

  /// Removes the file, also one that could not be understood, and its folder when nothing else is in it.
  void erase_all() override;

 private:
  struct Values;

  /// The file as it is now; without values, and trouble_ set, when it cannot be understood.
  std::unique_ptr<Values> load();

  Files& files_;
  std::string path_;
  std::optional<std::string> trouble_;
  std::unique_ptr<Values> values_;
};

}  // namespace quorvel
