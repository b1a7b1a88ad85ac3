#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace quorvel {

/// The user's settings as the system keeps them: named values, each a text or a 32-bit number.
class KeyValueStore {
 public:
  using Value = std::variant<std::string, std::uint32_t>;
  using Named = std::pair<std::string, Value>;

  virtual ~KeyValueStore() = default;

  /// Why nothing that is stored can be read; empty when all is well. Every write fails then.
  virtual std::optional<std::string> trouble() const = 0;

  /// Empty when the value is missing, unreadable or not of the type asked for. The empty name is the unnamed value.
  virtual std::optional<std::string> read_string(const std::string& name) const = 0;
  virtual std::optional<std::uint32_t> read_number(const std::string& name) const = 0;

  /// Stores the values in this order, at once where they share a file. Throws Failure when one cannot be stored; all
  /// values that are not named stay as they were.
  virtual void write(const std::vector<Named>& values) = 0;
  void write_string(const std::string& name, const std::string& text) { write({{name, text}}); }
  void write_number(const std::string& name, std::uint32_t number) { write({{name, number}}); }

  /// Removes every value, and the place they are kept in. Throws Failure when they are still there afterwards.
  virtual void erase_all() = 0;
};

}  // namespace quorvel
