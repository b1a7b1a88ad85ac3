#include "platform/curl/curl_socket_control.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <utility>

#include "text/failure.h"

#ifndef _WIN32
#include <openssl/ssl.h>
#include <poll.h>
#include <unistd.h>
#endif

namespace quorvel {
namespace {

using SteadyClock = std::chrono::steady_clock;

/// Waits until the socket can be read from or written to. CURLE_OPERATION_TIMEDOUT when the deadline passes first,
/// CURLE_ABORTED_BY_CALLBACK when `on_wait` returns false.
CURLcode wait_for(curl_socket_t socket, bool readable, SteadyClock::time_point deadline,
                  const std::function<bool()>& on_wait) {
  while (on_wait()) {
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(deadline - SteadyClock::now());
    const auto left = std::min(rest, curl::slice).count();
    if (left <= 0) return CURLE_OPERATION_TIMEDOUT;
#ifdef _WIN32
    WSAPOLLFD waiting{socket, static_cast<SHORT>(readable ? POLLRDNORM : POLLWRNORM), 0};
    const int ready = WSAPoll(&waiting, 1, static_cast<INT>(left));
#else
    pollfd waiting{socket, static_cast<short>(readable ? POLLIN : POLLOUT), 0};
    const int ready = TEMP_FAILURE_RETRY(poll(&waiting, 1, static_cast<int>(left)));
#endif
    // Errors of the socket itself count as ready: the next send or receive names them.
    if (ready > 0) return CURLE_OK;
    if (ready < 0) return readable ? CURLE_RECV_ERROR : CURLE_SEND_ERROR;
  }
  return CURLE_ABORTED_BY_CALLBACK;
}

/// Whether the peer closed a TLS connection in due form. With every TLS library but OpenSSL, libcurl itself reports a
/// missing closing notice as an error.
bool closed_in_due_form([[maybe_unused]] CURL* easy) {
#ifndef _WIN32
  const curl_tlssessioninfo* session = nullptr;
  if (curl_easy_getinfo(easy, CURLINFO_TLS_SSL_PTR, &session) != CURLE_OK || session == nullptr) return false;
  if (session->backend != CURLSSLBACKEND_OPENSSL) return true;
  const auto* const tls = static_cast<const SSL*>(session->internals);
  return tls != nullptr && (SSL_get_shutdown(tls) & SSL_RECEIVED_SHUTDOWN) != 0;
#else
  return true;
#endif
}

}  // namespace

struct CurlSocketControl::Connection {
  explicit Connection(bool with_tls) : secure(with_tls) {}
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() {
    curl_multi_remove_handle(multi, easy);
    curl_easy_cleanup(easy);
    curl_multi_cleanup(multi);
    curl_url_cleanup(address);
  }

  CURLcode open(const std::string& host, int port, const std::string& proxy, int timeout_seconds,
                const std::string& ca_file, const std::function<bool()>& on_wait);

  bool secure;
  CURLM* multi = curl_multi_init();  // keeps the connection
  CURL* easy = curl_easy_init();
  CURLU* address = curl_url();
  curl_socket_t socket = CURL_SOCKET_BAD;
  curl::Message message{};
};

CURLcode CurlSocketControl::Connection::open(const std::string& host, int port, const std::string& proxy,
                                             int timeout_seconds, const std::string& ca_file,
                                             const std::function<bool()>& on_wait) {
  if (multi == nullptr || easy == nullptr || address == nullptr) return CURLE_OUT_OF_MEMORY;
  const bool bare_ipv6 = host.find(':') != std::string::npos && !host.starts_with('[');
  const std::string named = bare_ipv6 ? "[" + host + "]" : host;
  // Part by part: a host's text pasted into an address could smuggle in a user name or another host.
  if (host.find('\0') != std::string::npos ||
      curl_url_set(address, CURLUPART_SCHEME, secure ? "https" : "http", 0) != CURLUE_OK ||
      curl_url_set(address, CURLUPART_HOST, named.c_str(), 0) != CURLUE_OK ||
      curl_url_set(address, CURLUPART_PORT, std::to_string(port).c_str(), 0) != CURLUE_OK) {
    return CURLE_URL_MALFORMAT;
  }
  curl_easy_setopt(easy, CURLOPT_CURLU, address);
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, message.data());
  curl_easy_setopt(easy, CURLOPT_CONNECT_ONLY, 1L);
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, timeout_seconds * 1000L);
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  // Without it libcurl waits for a name look-up that hangs even after the time-out.
  curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
  curl::use_proxy(easy, proxy);
  curl_easy_setopt(easy, CURLOPT_HTTPPROXYTUNNEL, 1L);
  curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  CURLcode code = curl::verify_servers(easy, ca_file, message);
  if (code == CURLE_OK) code = curl::perform(multi, easy, std::chrono::seconds(timeout_seconds), on_wait);
  if (code == CURLE_OK) code = curl_easy_getinfo(easy, CURLINFO_ACTIVESOCKET, &socket);
  // From here on libcurl sends, and when it does it may ignore SIGPIPE, which it leaves alone under NOSIGNAL.
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 0L);
  return code;
}

CurlSocketControl::CurlSocketControl(std::string ca_file, curl::ProxyFor proxy_for)
    : ca_file_(std::move(ca_file)), proxy_for_(std::move(proxy_for)) {
  curl::start();
}

CurlSocketControl::~CurlSocketControl() = default;

void CurlSocketControl::set_timeout(int seconds) {
  timeout_seconds_ = std::max(seconds, 1);
}

void CurlSocketControl::set_secure(bool secure) {
  if (secure && (curl_version_info(CURLVERSION_NOW)->features & CURL_VERSION_SSL) == 0) {
    throw Failure("Secure connections are not available: the network library has no TLS");
  }
  secure_ = secure;
}

int CurlSocketControl::connect(const std::string& host, int port) {
  disconnect();
  const std::optional<std::string> proxy = curl::ask_for_proxy(proxy_for_, secure_, host, on_wait);
  if (!proxy) {
    set_error(CURLE_ABORTED_BY_CALLBACK);
    return error_;
  }
  auto opened = std::make_unique<Connection>(secure_);
  const CURLcode code = opened->open(host, port, *proxy, timeout_seconds_, ca_file_, on_wait);
  set_error(code, opened->message.data());
  if (code == CURLE_OK) connection_ = std::move(opened);
  return code;
}

std::ptrdiff_t CurlSocketControl::write(std::string_view bytes) {
  if (!connection_) {
    set_error(CURLE_SEND_ERROR, "Not connected");
    return 0;
  }
  const auto deadline = SteadyClock::now() + std::chrono::seconds(timeout_seconds_);
  std::size_t done = 0;
  while (done < bytes.size()) {
    std::size_t sent = 0;
    CURLcode code = curl_easy_send(connection_->easy, bytes.data() + done, bytes.size() - done, &sent);
    done += sent;
    if (code == CURLE_AGAIN) code = wait_for(connection_->socket, false, deadline, on_wait);
    if (code != CURLE_OK) {
      set_error(code);
      break;
    }
  }
  return static_cast<std::ptrdiff_t>(done);
}

std::ptrdiff_t CurlSocketControl::read(char* buffer, std::size_t size) {
  if (!connection_) {
    set_error(CURLE_RECV_ERROR, "Not connected");
    return -1;
  }
  const auto deadline = SteadyClock::now() + std::chrono::seconds(timeout_seconds_);
  while (true) {
    // Receive before waiting: TLS may hold bytes that the socket no longer shows.
    std::size_t got = 0;
    CURLcode code = curl_easy_recv(connection_->easy, buffer, size, &got);
    if (code == CURLE_OK && got == 0 && size > 0 && connection_->secure && !closed_in_due_form(connection_->easy)) {
      set_error(CURLE_RECV_ERROR, "The connection was cut");
      return -1;
    }
    if (code == CURLE_OK) return static_cast<std::ptrdiff_t>(got);
    if (code == CURLE_AGAIN) code = wait_for(connection_->socket, true, deadline, on_wait);
    if (code != CURLE_OK) {
      set_error(code);
      return -1;
    }
  }
}

void CurlSocketControl::disconnect() {
  connection_.reset();
}

void CurlSocketControl::set_error(int code, const std::string& text) {
  error_ = code;
  error_text_ = code == 0 || !text.empty() ? text : curl_easy_strerror(static_cast<CURLcode>(code));
}

std::string CurlSocketControl::version() const {
  return std::string("libcurl ") + curl_version_info(CURLVERSION_NOW)->version;
}

}  // namespace quorvel
