#include "platform/windows/proxy.h"

#include <windows.h>

#include <winhttp.h>

#include <algorithm>
#include <optional>
#include <string_view>

#include "platform/windows/wide.h"
#include "text/case.h"
#include "text/cut.h"
#include "text/wildcard.h"

namespace quorvel {
namespace {

constexpr int patience_ms = 4000;  // with each step of asking the network

/// A text that the system has allocated.
struct SystemText {
  LPWSTR text = nullptr;

  SystemText() = default;
  ~SystemText() { GlobalFree(text); }
  SystemText(const SystemText&) = delete;
  SystemText& operator=(const SystemText&) = delete;
  std::string utf8() const { return text == nullptr ? std::string() : to_utf8(text); }
};

struct Settings {
  bool detect = false;  // by asking the network
  SystemText script, list, bypass;
};

void read(Settings& settings) {
  WINHTTP_CURRENT_USER_IE_PROXY_CONFIG config{};
  if (!WinHttpGetIEProxyConfigForCurrentUser(&config)) return;
  settings.detect = config.fAutoDetect != FALSE;
  settings.script.text = config.lpszAutoConfigUrl;
  settings.list.text = config.lpszProxy;
  settings.bypass.text = config.lpszProxyBypass;
}

/// What the script of the user's or the network's choice says; nothing when there is none, or it cannot be had.
std::optional<std::string> proxy_by_script(const Settings& settings, bool secure, const std::string& host) {
  if (!settings.detect && settings.script.text == nullptr) return {};
  const HINTERNET session =
      WinHttpOpen(L"Quorvel", WINHTTP_ACCESS_TYPE_NO_PROXY, WINHTTP_NO_PROXY_NAME, WINHTTP_NO_PROXY_BYPASS, 0);
  if (session == nullptr) return {};
  WinHttpSetTimeouts(session, patience_ms, patience_ms, patience_ms, patience_ms);
  WINHTTP_AUTOPROXY_OPTIONS options{};
  if (settings.detect) {
    options.dwFlags |= WINHTTP_AUTOPROXY_AUTO_DETECT;
    options.dwAutoDetectFlags = WINHTTP_AUTO_DETECT_TYPE_DHCP | WINHTTP_AUTO_DETECT_TYPE_DNS_A;
  }
  if (settings.script.text != nullptr) {
    options.dwFlags |= WINHTTP_AUTOPROXY_CONFIG_URL;
    options.lpszAutoConfigUrl = settings.script.text;
  }
  options.fAutoLogonIfChallenged = TRUE;
  WINHTTP_PROXY_INFO info{};
  const std::wstring address = to_utf16_or_marks((secure ? "https://" : "http://") + host + "/");
  const bool found = WinHttpGetProxyForUrl(session, address.c_str(), &options, &info) != FALSE;
  SystemText list, bypass;
  list.text = info.lpszProxy;
  bypass.text = info.lpszProxyBypass;
  WinHttpCloseHandle(session);
  if (!found) return {};
  if (info.dwAccessType != WINHTTP_ACCESS_TYPE_NAMED_PROXY) return std::string();
  return proxy_in(list.utf8(), bypass.utf8(), secure, host);
}

bool is_this_machine(const std::string& host) {
  return host == "localhost" || host == "::1" || host.starts_with("127.");
}

bool is_bypassed(std::string bypass, const std::string& host) {
  std::ranges::replace(bypass, ' ', ';');
  const std::vector<std::string_view> patterns = split(bypass, ";");
  return std::ranges::any_of(patterns, [&](std::string_view pattern) {
    return pattern == "<local>" ? host.find('.') == std::string::npos : matches(lower_case(host), lower_case(pattern));
  });
}

}  // namespace

std::string proxy_in(const std::string& list, const std::string& bypass, bool secure, const std::string& host) {
  if (is_bypassed(bypass, host)) return {};
  std::string for_all, for_socks;
  std::string entries = list;
  std::ranges::replace(entries, ' ', ';');
  for (const std::string_view entry : split(entries, ";")) {
    const std::size_t equals = entry.find('=');
    const std::string kind = equals == std::string_view::npos ? "" : lower_case(entry.substr(0, equals));
    std::string proxy(entry.substr(equals + 1));
    if (proxy.empty()) continue;
    const bool has_scheme = proxy.find("://") != std::string::npos;
    if (kind == (secure ? "https" : "http")) return has_scheme ? proxy : "http://" + proxy;
    if (kind.empty() && for_all.empty()) for_all = has_scheme ? proxy : "http://" + proxy;
    if (kind == "socks") for_socks = has_scheme ? proxy : "socks4://" + proxy;
  }
  return for_all.empty() ? for_socks : for_all;
}

std::string system_proxy(bool secure, const std::string& host) {
  if (is_this_machine(host)) return {};
  Settings settings;
  read(settings);
  const std::optional<std::string> by_script = proxy_by_script(settings, secure, host);
  return by_script ? *by_script : proxy_in(settings.list.utf8(), settings.bypass.utf8(), secure, host);
}

}  // namespace quorvel
