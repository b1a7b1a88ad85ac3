#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "platform/curl/curl_support.h"
#include "platform/web_client.h"

namespace quorvel {

/// libcurl's own HTTP client. An answer that is too long, takes too long, stands still or redirects too often is given
/// up, and so is one that leads from a secure address to another kind.
class CurlWebClient : public WebClient {
 public:
  /// `agent`: what servers are told of who asks. `ca_file`: certificates, as PEM, to trust instead of the system's.
  /// Without `proxy_for` the proxies are those of the environment. Throws Failure when libcurl cannot be used.
  explicit CurlWebClient(const std::string& agent, std::string ca_file = {}, curl::ProxyFor proxy_for = {});
  ~CurlWebClient() override;

  WebAnswer get(const std::string& url) override;

 private:
  struct Address;
  struct Connection;

  class Overtaken {};

  WebAnswer follow(const std::string& url);
  WebAnswer fetch(const Address& address, std::chrono::steady_clock::duration patience);
  CURLcode set_up(const Address& address, const curl::OnWait& goes_on);
  [[noreturn]] void fail(CURLcode code, const std::string& host);

  std::string ca_file_;
  curl::ProxyFor proxy_for_;
  std::string proxy_host_;  // that was last asked about
  std::unique_ptr<Connection> connection_;
  int requests_ = 0;  // a later one, from on_wait, goes first
};

}  // namespace quorvel
