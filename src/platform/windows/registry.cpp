#include "platform/windows/registry.h"

#include <vector>

#include "platform/windows/wide.h"

namespace quorvel::registry {
namespace {

class Key {
 public:
  explicit Key(HKEY key) : key_(key) {}
  ~Key() {
    if (key_ != nullptr) RegCloseKey(key_);
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
  explicit operator bool() const { return key_ != nullptr; }
  HKEY get() const { return key_; }

 private:
  HKEY key_;
};

/// The value's bytes when it is of this type.
std::optional<std::vector<BYTE>> read(HKEY hive, const std::string& path, const std::string& name, DWORD wanted) {
  HKEY opened = nullptr;
  if (RegOpenKeyExW(hive, to_utf16_or_marks(path).c_str(), 0, KEY_QUERY_VALUE, &opened) != ERROR_SUCCESS) return {};
  const Key key(opened);
  const std::wstring wide_name = to_utf16_or_marks(name);
  std::vector<BYTE> bytes;
  DWORD type = 0;
  while (true) {
    auto size = static_cast<DWORD>(bytes.size());
    const LSTATUS result = RegQueryValueExW(key.get(), wide_name.c_str(), nullptr, &type, bytes.data(), &size);
    if (result != ERROR_SUCCESS && result != ERROR_MORE_DATA) return {};
    if (type != wanted) return {};
    const bool fits = result == ERROR_SUCCESS && size <= bytes.size();
    bytes.resize(size);
    if (fits) return bytes;
  }
}

LSTATUS write(HKEY hive, const std::string& path, const std::string& name, DWORD type, const void* bytes,
              std::size_t size) {
  HKEY opened = nullptr;
  const LSTATUS result =
      RegCreateKeyExW(hive, to_utf16_or_marks(path).c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &opened, nullptr);
  if (result != ERROR_SUCCESS) return result;
  const Key key(opened);
  return RegSetValueExW(key.get(), to_utf16_or_marks(name).c_str(), 0, type, static_cast<const BYTE*>(bytes),
                        static_cast<DWORD>(size));
}

}  // namespace

std::optional<std::string> read_string(HKEY hive, const std::string& key, const std::string& name) {
  const std::optional<std::vector<BYTE>> bytes = read(hive, key, name, REG_SZ);
  if (!bytes) return {};
  std::wstring text;
  for (std::size_t at = 0; at + 1 < bytes->size(); at += 2) {
    text += static_cast<wchar_t>((*bytes)[at] | (*bytes)[at + 1] << 8);
  }
  return to_utf8(text.substr(0, text.find(L'\0')));
}

std::optional<std::uint32_t> read_number(HKEY hive, const std::string& key, const std::string& name) {
  const std::optional<std::vector<BYTE>> bytes = read(hive, key, name, REG_DWORD);
  if (!bytes || bytes->size() != sizeof(std::uint32_t)) return {};
  std::uint32_t number = 0;
  for (std::size_t i = sizeof number; i-- > 0;) number = number << 8 | (*bytes)[i];
  return number;
}

LSTATUS write_string(HKEY hive, const std::string& key, const std::string& name, const std::string& text) {
  const std::wstring wide = to_utf16_or_marks(text.substr(0, text.find('\0')));
  return write(hive, key, name, REG_SZ, wide.c_str(), wide.size() * sizeof(wchar_t));
}

LSTATUS write_number(HKEY hive, const std::string& key, const std::string& name, std::uint32_t number) {
  return write(hive, key, name, REG_DWORD, &number, sizeof number);
}

}  // namespace quorvel::registry
