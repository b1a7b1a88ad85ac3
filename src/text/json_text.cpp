#include "text/json_text.h"

#include "text/characters.h"

namespace quorvel {

void append_json(std::string& json, std::string_view value) {
  constexpr std::string_view digits = "0123456789abcdef";
  constexpr char32_t replacement = 0xFFFD;
  json += '"';
  for (const char32_t character : decode(value)) {
    if (character == '"' || character == '\\') {
      json += '\\';
      append(json, character);
    } else if (character < 0x20) {
      json.append("\\u00").append(1, digits[character >> 4]).append(1, digits[character & 0xF]);
    } else {
      const bool stray = character >= stray_byte_base && character <= stray_byte_base + 0xFF;
      append(json, stray ? replacement : character);
    }
  }
  json += '"';
}

std::string& JsonObject::begin(std::string_view key) {
  if (json_.size() > 1) json_ += ',';
  return json_.append("\"").append(key).append("\":");
}

JsonObject& JsonObject::text(std::string_view key, std::string_view value) {
  value.empty() ? void(begin(key) += "null") : append_json(begin(key), value);
  return *this;
}

JsonObject& JsonObject::number(std::string_view key, std::optional<int> value) {
  begin(key) += value ? std::to_string(*value) : "null";
  return *this;
}

JsonObject& JsonObject::numbers(std::string_view key, const std::vector<int>& value) {
  std::string list;
  for (const int number : value) list.append(list.empty() ? "[" : ",").append(std::to_string(number));
  begin(key) += value.empty() ? "null" : list + "]";
  return *this;
}

JsonObject& JsonObject::flag(std::string_view key, bool value) {
  begin(key) += value ? "true" : "false";
  return *this;
}

JsonObject& JsonObject::texts(std::string_view key, const std::vector<std::string>& value) {
  begin(key) += '[';
  for (const std::string& each : value) {
    if (&each != &value.front()) json_ += ',';
    append_json(json_, each);
  }
  json_ += ']';
  return *this;
}

JsonObject& JsonObject::objects(std::string_view key, const std::vector<JsonObject>& value) {
  std::string list;
  for (const JsonObject& each : value) list.append(list.empty() ? "" : ",").append(each.line());
  begin(key) += "[" + list + "]";
  return *this;
}

JsonObject& JsonObject::object(std::string_view key, const JsonObject& value) {
  begin(key) += value.line();
  return *this;
}

}  // namespace quorvel
