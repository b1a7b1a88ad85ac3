#pragma once

#include <curl/curl.h>

#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

/// What every use of libcurl here has in common.
namespace quorvel::curl {

/// The address of the proxy for a host; empty for none. Called on a thread of its own, as it may take its time.
using ProxyFor = std::function<std::string(bool secure, const std::string& host)>;
using OnWait = std::function<bool()>;
using Message = std::array<char, CURL_ERROR_SIZE>;

constexpr auto slice = std::chrono::milliseconds(50);  // of waiting

/// Throws Failure when libcurl cannot be used.
void start();

/// The proxy for a host; nothing when `on_wait` returns false meanwhile.
std::optional<std::string> ask_for_proxy(const ProxyFor& proxy_for, bool secure, const std::string& host,
                                         const OnWait& on_wait);

/// An empty `proxy` means none, whatever the environment says.
void use_proxy(CURL* easy, const std::string& proxy);

/// Servers have to show certificates of authorities whom the system trusts or, where `ca_file` is given, those in it.
/// Fails with a message where that cannot be read.
CURLcode verify_servers(CURL* easy, const std::string& ca_file, Message& message);

/// Until `easy` has done what it is set up for, has failed, has been waited for as long as `patience`, or `on_wait`
/// returns false. What Schannel does in between is no waiting: it asks the authorities' own servers for lists of
/// revoked certificates. `easy` stays with `multi`.
CURLcode perform(CURLM* multi, CURL* easy, std::chrono::steady_clock::duration patience, const OnWait& on_wait);

}  // namespace quorvel::curl
