#pragma once

#include <functional>
#include <string>

namespace quorvel {

/// What a web server has answered, whole.
struct WebAnswer {
  int status = 0;           // of HTTP: 200, 404
  std::string body;         // as the server meant it, not compressed any more
  std::string retry_after;  // the header of that name
};

/// Fetches resources as a browser does: over one connection that is kept, by HTTP/2 where the server speaks it, with
/// redirects followed and the proxies that the system or the environment names.
class WebClient {
 public:
  virtual ~WebClient() = default;

  /// Throws Failure, a sentence for the user without its full stop that names the host, when no whole answer has
  /// arrived, whatever its status.
  virtual WebAnswer get(const std::string& url) = 0;

  /// Called at least every 50 ms while the network is waited for; false ends the transfer. It may call get() itself.
  std::function<bool()> on_wait = [] { return true; };
};

}  // namespace quorvel
