#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace quorvel {

/// The user's settings as the system keeps them: named values, each a text or a 32-bit number.
class KeyValueStore {
 public:
  virtual ~KeyValueStore() = default;

  /// Why nothing that is stored can be read; empty when all is well. Every write fails then.
  virtual std::optional<std::string> trouble() const = 0;

  /// Empty when the value is missing, unreadable or not of the type asked for. The empty name is the unnamed value.
  virtual std::optional<std::string> read_string(const std::string& name) const = 0;
  virtual std::optional<std::uint32_t> read_number(const std::string& name) const = 0;

  /// Throw Failure when the value cannot be stored; all other values stay as they were.
  virtual void write_string(const std::string& name, const std::string& text) = 0;
  virtual void write_number(const std::string& name, std::uint32_t number) = 0;

  /// Removes every value, and the place they are kept in. Throws Failure when they are still there afterwards.
  virtual void erase_all() = 0;
};

}  // namespace quorvel
