#include "platform/curl/curl_support.h"

#include <future>

#include "platform/disk_files.h"
#include "text/failure.h"

namespace quorvel::curl {
namespace {

using SteadyClock = std::chrono::steady_clock;

/// Lets the handshake of a connection that stands take longer than a connection may.
void extend_handshake(CURL* easy) {
  constexpr auto limit = std::chrono::milliseconds(std::chrono::minutes(1));
  curl_off_t connected_us = 0;
  curl_easy_getinfo(easy, CURLINFO_CONNECT_TIME_T, &connected_us);
  if (connected_us > 0) curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limit.count()));
}

}  // namespace

void start() {
  static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (started != CURLE_OK) throw Failure("The network library could not be started");
}

std::optional<std::string> ask_for_proxy(const ProxyFor& proxy_for, bool secure, const std::string& host,
                                         const OnWait& on_wait) {
  if (!proxy_for) return std::string();
  std::future<std::string> proxy = std::async(std::launch::async, proxy_for, secure, host);
  while (proxy.wait_for(slice) != std::future_status::ready) {
    if (!on_wait()) return {};
  }
  return proxy.get();
}

void use_proxy(CURL* easy, const std::string& proxy) {
  curl_easy_setopt(easy, CURLOPT_PROXY, proxy.c_str());
  curl_easy_setopt(easy, CURLOPT_NOPROXY, proxy.empty() ? "*" : "");
}

CURLcode verify_servers(CURL* easy, const std::string& ca_file, Message& message) {
  curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
  curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
  // Schannel asks for the authority's list of revoked certificates; a network that blocks it would otherwise cut off
  // the service altogether.
  curl_easy_setopt(easy, CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_REVOKE_BEST_EFFORT));
  if (ca_file.empty()) return CURLE_OK;
  // Read here: libcurl would look for a name that the system's code page does not hold in another place.
  std::optional<std::string> authorities = DiskFiles().read(ca_file);
  if (!authorities) {
    ("The certificates of " + ca_file + " cannot be read").copy(message.data(), message.size() - 1);
    return CURLE_SSL_CACERT_BADFILE;
  }
  curl_blob blob{authorities->data(), authorities->size(), CURL_BLOB_COPY};
  curl_easy_setopt(easy, CURLOPT_CAINFO_BLOB, &blob);
  // TLS libraries without such a folder refuse the option, to the same effect.
  curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
  return CURLE_OK;
}

CURLcode perform(CURLM* multi, CURL* easy, SteadyClock::duration patience, const OnWait& on_wait) {
  if (curl_multi_add_handle(multi, easy) != CURLM_OK) return CURLE_OUT_OF_MEMORY;
  SteadyClock::duration waited{};
  for (int running = 1; curl_multi_perform(multi, &running) == CURLM_OK;) {
    int left = 0;
    if (const CURLMsg* const ended = curl_multi_info_read(multi, &left)) return ended->data.result;
    if (waited > patience) return CURLE_OPERATION_TIMEDOUT;
    if (!on_wait()) return CURLE_ABORTED_BY_CALLBACK;
    extend_handshake(easy);
    const auto begin = SteadyClock::now();
    if (curl_multi_poll(multi, nullptr, 0, static_cast<int>(slice.count()), nullptr) != CURLM_OK) break;
    waited += SteadyClock::now() - begin;
  }
  return CURLE_FAILED_INIT;
}

}  // namespace quorvel::curl
