#pragma once

#include <cstdlib>
#include <string>

namespace quorvel::testing {

/// One definition per system.
void set_variable(const std::string& name, const std::string& value);

/// A variable of the environment for the length of a test. Nothing here tells an empty one from a missing one.
class Variable {
 public:
  Variable(const std::string& name, const std::string& value) : name_(name), old_(get(name)) {
    set_variable(name, value);
  }
  ~Variable() { set_variable(name_, old_); }
  Variable(const Variable&) = delete;

  static std::string get(const std::string& name) {
    const char* const value = std::getenv(name.c_str());
    return value != nullptr ? value : "";
  }

 private:
  const std::string name_, old_;
};

}  // namespace quorvel::testing
