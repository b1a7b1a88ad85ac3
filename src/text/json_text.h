#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvel {

/// Appends `value` as a string of JSON, in quotes. A stray byte of a file name, for which JSON has no form, becomes
/// U+FFFD.
void append_json(std::string& json, std::string_view value);

/// An object of JSON in one line. What is empty is null.
class JsonObject {
 public:
  JsonObject& text(std::string_view key, std::string_view value);
  JsonObject& number(std::string_view key, std::optional<int> value);
  JsonObject& numbers(std::string_view key, const std::vector<int>& value);
  JsonObject& flag(std::string_view key, bool value);
  /// A list of texts, which may be empty.
  JsonObject& texts(std::string_view key, const std::vector<std::string>& value);
  JsonObject& objects(std::string_view key, const std::vector<JsonObject>& value);
  JsonObject& object(std::string_view key, const JsonObject& value);

  std::string line() const { return json_ + "}"; }

 private:
  std::string& begin(std::string_view key);

  std::string json_ = "{";
};

}  // namespace quorvel
