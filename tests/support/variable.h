#pragma once

#include <optional>
#include <string>

namespace quorvel::testing {

/// A variable of the environment for the length of a test; without a value it is not there.
class Variable {
 public:
  Variable(std::string name, const std::optional<std::string>& value) : name_(std::move(name)), old_(get(name_)) {
    set(name_, value);
  }
  ~Variable() { set(name_, old_); }
  Variable(const Variable&) = delete;
  Variable& operator=(const Variable&) = delete;

  static std::optional<std::string> get(const std::string& name);

 private:
  static void set(const std::string& name, const std::optional<std::string>& value);

  const std::string name_;
  const std::optional<std::string> old_;
};

}  // namespace quorvel::testing
