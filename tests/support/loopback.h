#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "certificates.h"

/// Servers of the tests' own on 127.0.0.1, as bare as the system has them. One definition per system.
namespace quorvel::testing {

/// What a client of such a server is spoken to by.
class Peer {
 public:
  virtual ~Peer() = default;

  /// Waits for a byte; false when there will be none.
  virtual bool read(char& byte) = 0;
  /// False unless all are sent.
  virtual bool write(const std::string& bytes) = 0;
  /// Whether the client goes away before that time is over.
  virtual bool hangs_up_within(std::chrono::milliseconds time) = 0;
  /// Nothing more will be sent.
  virtual void end() = 0;
  /// From any thread: ends whatever is being waited for.
  virtual void cut() = 0;
};

class Listener {
 public:
  /// Port 0 takes a free one. Throws when the port is taken, the identity is unusable, or there is no TLS here.
  explicit Listener(std::uint16_t port = 0, const std::optional<TlsIdentity>& tls = {});
  ~Listener();
  Listener(const Listener&) = delete;
  Listener& operator=(const Listener&) = delete;

  std::uint16_t port() const { return port_; }
  /// Waits for a client; null when stop() came first.
  std::shared_ptr<Peer> accept();
  /// From any thread.
  void stop();

 private:
  struct System;
  std::unique_ptr<System> system_;
  std::uint16_t port_ = 0;
};

/// For a thread that serves: signals are for others, and a client that hangs up early does not end the test by one.
void serve_undisturbed();

}  // namespace quorvel::testing
