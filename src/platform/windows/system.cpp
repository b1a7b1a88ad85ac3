#include "platform/system.h"

#include <windows.h>

#include <shellapi.h>

#include <array>
#include <string_view>

#include "platform/curl/curl_socket_control.h"
#include "platform/curl/curl_web_client.h"
#include "platform/windows/proxy.h"
#include "platform/windows/wide.h"

namespace quorvel {
namespace {

constexpr std::wstring_view blanks = L" \t";

class SystemClock : public Clock {
 public:
  std::chrono::year_month_day today() const override {
    const SYSTEMTIME local = now();
    return std::chrono::year(local.wYear) / local.wMonth / local.wDay;
  }

  std::string time_of_day() const override {
    const SYSTEMTIME local = now();
    std::array<wchar_t, 256> text{};
    const int size =
        GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, 0, &local, nullptr, text.data(), static_cast<int>(text.size()));
    return size <= 0 ? std::string() : to_utf8({text.data(), static_cast<std::size_t>(size) - 1});
  }

  std::chrono::local_seconds local(std::chrono::sys_seconds moment) const override {
    constexpr std::int64_t since_1601 = 11'644'473'600, ticks = 10'000'000;
    const auto count = static_cast<std::uint64_t>((moment.time_since_epoch().count() + since_1601) * ticks);
    const FILETIME utc{static_cast<DWORD>(count), static_cast<DWORD>(count >> 32U)};
    SYSTEMTIME universal{}, local{};
    FILETIME moved{};
    if (FileTimeToSystemTime(&utc, &universal) == FALSE ||
        SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local) == FALSE ||
        SystemTimeToFileTime(&local, &moved) == FALSE) {
      return std::chrono::local_seconds(moment.time_since_epoch());
    }
    const auto there = static_cast<std::int64_t>(std::uint64_t{moved.dwHighDateTime} << 32U | moved.dwLowDateTime);
    return std::chrono::local_seconds(std::chrono::seconds(there / ticks - since_1601));
  }

  void wait(std::chrono::milliseconds time) override { Sleep(static_cast<DWORD>(time.count())); }

 private:
  static SYSTEMTIME now() {
    SYSTEMTIME local{};
    GetLocalTime(&local);
    return local;
  }
};

/// Empty as well when it is not set.
std::string variable(const wchar_t* name) {
  std::wstring value(GetEnvironmentVariableW(name, nullptr, 0), L'\0');
  value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
  return to_utf8(value);
}

/// For those who must trust an authority of their own and may not tell Windows so.
std::string own_authorities() {
  return variable(L"SSL_CERT_FILE");
}

/// The program's name ends at its closing quote, or at a blank where it has none.
std::wstring_view without_program(std::wstring_view line) {
  bool quoted = false;
  std::size_t at = 0;
  for (; at < line.size() && (quoted || blanks.find(line[at]) == std::wstring_view::npos); ++at) {
    if (line[at] == L'"') quoted = !quoted;
  }
  line.remove_prefix(at);
  line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
  return line.substr(0, line.find_last_not_of(blanks) + 1);
}

}  // namespace

std::unique_ptr<Clock> system_clock() {
  return std::make_unique<SystemClock>();
}

std::unique_ptr<SocketControl> system_socket() {
  return std::make_unique<CurlSocketControl>(own_authorities(), system_proxy);
}

std::unique_ptr<WebClient> system_web_client(const std::string& agent) {
  return std::make_unique<CurlWebClient>(agent, own_authorities(), system_proxy);
}

std::string application_data_folder(Files&) {
  std::string folder = variable(L"APPDATA");
  folder.erase(folder.find_last_not_of("\\/") + 1);
  return folder;
}

std::string program_file() {
  std::wstring path(MAX_PATH, L'\0');
  while (true) {
    const DWORD size = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (size < path.size()) return to_utf8({path.data(), size});
    path.resize(path.size() * 2);
  }
}

std::string program_folder() {
  const std::string file = program_file();
  return file.substr(0, file.rfind('\\'));
}

std::vector<std::string> separate_arguments(int, char**) {
  int count = 0;
  wchar_t** const given = CommandLineToArgvW(GetCommandLineW(), &count);
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(to_utf8(given[i]));
  LocalFree(given);
  return arguments;
}

std::vector<std::string> command_line_arguments(int, char**) {
  const std::string text = to_utf8(without_program(GetCommandLineW()));
  return text.empty() ? std::vector<std::string>() : std::vector{text};
}

}  // namespace quorvel
