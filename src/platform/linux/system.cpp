#include "platform/system.h"

#include <cstdlib>

#include "platform/curl/curl_socket_control.h"
#include "platform/linux/disk_files.h"
#include "platform/linux/gio_file_operation.h"
#include "platform/linux/key_file_store.h"
#include "platform/linux/standard_folders.h"
#include "platform/linux/system_clock.h"

namespace quorvel {

std::unique_ptr<Files> system_files() {
  return std::make_unique<DiskFiles>();
}

std::unique_ptr<FileOperation> system_file_operation(std::function<bool(std::uint64_t, std::uint64_t)> progress) {
  return std::make_unique<GioFileOperation>(std::move(progress));
}

std::unique_ptr<KeyValueStore> system_key_values(Files& files) {
  return std::make_unique<KeyFileStore>(files, settings_file());
}

std::unique_ptr<SocketControl> system_socket() {
  // As OpenSSL's own programs do, for those who must trust an authority of their own.
  const char* const authority = std::getenv("SSL_CERT_FILE");
  return std::make_unique<CurlSocketControl>(authority != nullptr ? authority : "");
}

std::unique_ptr<Clock> system_clock() {
  return std::make_unique<SystemClock>();
}

}  // namespace quorvel
