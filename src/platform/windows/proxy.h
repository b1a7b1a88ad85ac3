#pragma once

#include <string>

/// The proxy that the user has set up in the system.
namespace quorvel {

/// For a connection to `host`, with TLS or without: "http://proxy:8080" or "socks4://proxy:1080"; empty for none, as
/// for this machine itself. May take seconds, where the network has to be asked.
std::string system_proxy(bool secure, const std::string& host);

/// The same out of a list such as "proxy:8080" or "http=a:80;https=b:81;socks=c:1080", but for hosts that fit a pattern
/// of `bypass`, such as "*.example;<local>"; the last means every name without a dot.
std::string proxy_in(const std::string& list, const std::string& bypass, bool secure, const std::string& host);

}  // namespace quorvel
