#include "platform/system.h"

#include <cstdlib>

#include "platform/curl/curl_socket_control.h"
#include "platform/disk_files.h"
#include "platform/linux/desktop_entries.h"
#include "platform/linux/folders.h"
#include "platform/linux/gio_file_operation.h"
#include "platform/linux/gio_launcher.h"
#include "platform/linux/key_file_store.h"
#include "platform/linux/socket_channel.h"
#include "platform/linux/standard_folders.h"
#include "platform/linux/system_clock.h"

namespace quorvel {

std::unique_ptr<Files> system_files() {
  return std::make_unique<DiskFiles>();
}

std::unique_ptr<FileOperation> system_file_operation(std::function<bool(std::uint64_t, std::uint64_t)> progress,
                                                     std::function<bool(const std::string&)> replace) {
  return std::make_unique<GioFileOperation>(std::move(progress), std::move(replace));
}

std::unique_ptr<KeyValueStore> system_key_values(Files& files) {
  return std::make_unique<KeyFileStore>(files, standard_folders::settings_file());
}

std::unique_ptr<SocketControl> system_socket() {
  // As OpenSSL's own programs do, for those who must trust an authority of their own.
  const char* const authority = std::getenv("SSL_CERT_FILE");
  return std::make_unique<CurlSocketControl>(authority != nullptr ? authority : "");
}

std::unique_ptr<Clock> system_clock() {
  return std::make_unique<SystemClock>();
}

std::unique_ptr<InstanceChannel> system_instance_channel() {
  return std::make_unique<SocketChannel>(standard_folders::runtime().value_or(""));
}

std::unique_ptr<ContextMenu> system_context_menu(Files& files) {
  return std::make_unique<DesktopEntries>(files, standard_folders::application_data(),
                                          standard_folders::program_file());
}

std::unique_ptr<Launcher> system_launcher() {
  return std::make_unique<GioLauncher>();
}

std::string application_data_folder(Files& files) {
  std::string folder = standard_folders::application_data();
  create_folders(files, folder);  // where this fails the folder is not there, and callers look
  return folder;
}

std::string program_folder() {
  return standard_folders::program();
}

}  // namespace quorvel
