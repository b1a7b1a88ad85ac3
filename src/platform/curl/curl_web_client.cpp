#include "platform/curl/curl_web_client.h"

#include <utility>

#include "text/failure.h"

namespace quorvel {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr long connect_ms = 4000, stand_still_seconds = 20;
constexpr auto time_limit = std::chrono::seconds(180);  // with all redirects
constexpr std::size_t body_limit = std::size_t{32} << 20U;
constexpr int redirect_limit = 10;
constexpr std::size_t max_host_length = 253;  // characters that are told

[[noreturn]] void give_up(const std::string& host, const std::string& reason) {
  throw Failure("The answer from " + host + " was given up: " + reason);
}

std::string part_of(CURLU* url, CURLUPart part) {
  char* text = nullptr;
  if (curl_url_get(url, part, &text, 0) != CURLUE_OK) return {};
  const std::unique_ptr<char, void (*)(void*)> owned(text, curl_free);
  return text;
}

}  // namespace

struct CurlWebClient::Address {
  explicit Address(const std::string& url) {
    const std::unique_ptr<CURLU, void (*)(CURLU*)> parsed(curl_url(), curl_url_cleanup);
    // Like a browser, and the classic way, it takes an address without a scheme for one of http.
    if (url.find('\0') == std::string::npos &&
        curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), CURLU_GUESS_SCHEME) == CURLUE_OK) {
      text = part_of(parsed.get(), CURLUPART_URL);
      scheme = part_of(parsed.get(), CURLUPART_SCHEME);
      host = part_of(parsed.get(), CURLUPART_HOST).substr(0, max_host_length);
    }
    if (scheme != "http" && scheme != "https") {
      throw Failure("The address " + url.substr(0, max_host_length) + " is invalid");
    }
  }
  bool is_secure() const { return scheme == "https"; }

  std::string text, scheme, host;
};

struct CurlWebClient::Connection {
  const std::unique_ptr<CURLM, CURLMcode (*)(CURLM*)> multi{curl_multi_init(), curl_multi_cleanup};  // keeps it
  const std::unique_ptr<CURL, void (*)(CURL*)> easy{curl_easy_init(), curl_easy_cleanup};
  bool verifies_servers = false;
  curl::Message message{};
  std::string body;
  bool is_too_long = false;

  static std::size_t take(const char* bytes, std::size_t, std::size_t count, Connection* connection) {
    connection->is_too_long = connection->body.size() + count > body_limit;
    if (connection->is_too_long) return 0;
    connection->body.append(bytes, count);
    return count;
  }
};

CurlWebClient::CurlWebClient(const std::string& agent, std::string ca_file, curl::ProxyFor proxy_for)
    : ca_file_(std::move(ca_file)), proxy_for_(std::move(proxy_for)) {
  curl::start();
  connection_ = std::make_unique<Connection>();
  CURL* const easy = connection_->easy.get();
  if (easy == nullptr || !connection_->multi) throw Failure("The network library could not be started");
  curl_easy_setopt(easy, CURLOPT_USERAGENT, agent.c_str());
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
  curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");  // all that it can read
  curl_easy_setopt(easy, CURLOPT_LOW_SPEED_LIMIT, 1L);
  curl_easy_setopt(easy, CURLOPT_LOW_SPEED_TIME, stand_still_seconds);
  // Without it libcurl waits for a name look-up that hangs even after the time-out.
  curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, connection_->message.data());
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Connection::take);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, connection_.get());
  // Several idle ones can make a service block the address.
  curl_multi_setopt(connection_->multi.get(), CURLMOPT_MAXCONNECTS, 1L);
}

CurlWebClient::~CurlWebClient() = default;

WebAnswer CurlWebClient::get(const std::string& url) {
  while (true) {
    try {
      return follow(url);
    } catch (const Overtaken&) {
      continue;  // there is but one connection, so this request begins again
    }
  }
}

WebAnswer CurlWebClient::follow(const std::string& url) {
  const auto end = SteadyClock::now() + time_limit;
  Address address(url);
  for (int redirects = 0;; ++redirects) {
    WebAnswer answer = fetch(address, end - SteadyClock::now());
    const char* target = nullptr;
    curl_easy_getinfo(connection_->easy.get(), CURLINFO_REDIRECT_URL, &target);
    if (target == nullptr) return answer;
    if (redirects == redirect_limit) {
      give_up(address.host, "it redirects more than " + std::to_string(redirect_limit) + " times");
    }
    const bool was_secure = address.is_secure();
    Address next(target);
    if (was_secure && !next.is_secure()) give_up(address.host, "it leads to " + next.host + " without encryption");
    address = std::move(next);
  }
}

WebAnswer CurlWebClient::fetch(const Address& address, SteadyClock::duration patience) {
  CURL* const easy = connection_->easy.get();
  const int number = ++requests_;
  const auto goes_on = [this, number] { return on_wait() && number == requests_; };
  curl_multi_remove_handle(connection_->multi.get(), easy);  // from the request that this one overtakes
  connection_->message = {};
  connection_->body.clear();
  connection_->is_too_long = false;
  CURLcode code = set_up(address, goes_on);
  {
    const auto remove = [this](CURL* added) { curl_multi_remove_handle(connection_->multi.get(), added); };
    const std::unique_ptr<CURL, decltype(remove)> added(easy, remove);  // also when on_wait() throws
    if (code == CURLE_OK) code = curl::perform(connection_->multi.get(), easy, patience, goes_on);
  }
  if (number != requests_) throw Overtaken();
  if (code != CURLE_OK) fail(code, address.host);
  long status = 0;
  curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
  curl_header* retry_after = nullptr;
  curl_easy_header(easy, "Retry-After", 0, CURLH_HEADER, -1, &retry_after);
  return {static_cast<int>(status), std::move(connection_->body), retry_after == nullptr ? "" : retry_after->value};
}

CURLcode CurlWebClient::set_up(const Address& address, const curl::OnWait& goes_on) {
  CURL* const easy = connection_->easy.get();
  if (proxy_for_ && proxy_host_ != address.scheme + address.host) {
    const std::optional<std::string> proxy =
        curl::ask_for_proxy(proxy_for_, address.is_secure(), address.host, goes_on);
    if (!proxy) return CURLE_ABORTED_BY_CALLBACK;
    curl::use_proxy(easy, *proxy);
    proxy_host_ = address.scheme + address.host;
  }
  if (!connection_->verifies_servers) {
    const CURLcode code = curl::verify_servers(easy, ca_file_, connection_->message);
    if (code != CURLE_OK) return code;
    connection_->verifies_servers = true;
  }
  curl_easy_setopt(easy, CURLOPT_URL, address.text.c_str());
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, connect_ms);
  return CURLE_OK;
}

void CurlWebClient::fail(CURLcode code, const std::string& host) {
  proxy_host_.clear();  // it may be another one by now
  if (code == CURLE_ABORTED_BY_CALLBACK) throw Failure("The transfer was cancelled");
  if (connection_->is_too_long) give_up(host, "its body is longer than " + std::to_string(body_limit) + " bytes");
  const std::string message = connection_->message.data();
  if (code == CURLE_OPERATION_TIMEDOUT && message.empty()) {
    give_up(host, "it takes longer than " + std::to_string(time_limit.count()) + " seconds");
  }
  curl_off_t connected_us = 0;
  curl_easy_getinfo(connection_->easy.get(), CURLINFO_PRETRANSFER_TIME_T, &connected_us);
  const std::string reason = message.empty() ? curl_easy_strerror(code) : message;
  if (connected_us == 0) throw Failure("No connection to " + host + ": " + reason);
  if (code == CURLE_SEND_ERROR) throw Failure("The request could not be sent to " + host + ": " + reason);
  throw Failure("The answer from " + host + " did not arrive: " + reason);
}

}  // namespace quorvel
