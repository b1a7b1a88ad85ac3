#include "platform/system.h"

#include <glib.h>

#include <array>
#include <clocale>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <thread>

#include "platform/curl/curl_socket_control.h"
#include "platform/curl/curl_web_client.h"
#include "platform/linux/folders.h"

namespace quorvel {
namespace {

/// The user's day and time. In UTF-8; as "14:05:33" when the user's locale does not exist here or writes in another
/// encoding.
class SystemClock : public Clock {
 public:
  SystemClock() = default;
  ~SystemClock() override { freelocale(locale_); }
  SystemClock(const SystemClock&) = delete;
  SystemClock& operator=(const SystemClock&) = delete;

  std::chrono::year_month_day today() const override {
    const std::tm local = now();
    return std::chrono::year(local.tm_year + 1900) / (local.tm_mon + 1) / local.tm_mday;
  }

  std::string time_of_day() const override {
    const std::tm local = now();
    const std::string text = formatted("%X", local);
    const bool usable = !text.empty() && g_utf8_validate_len(text.data(), text.size(), nullptr) != FALSE;
    return usable ? text : formatted("%H:%M:%S", local);
  }

  std::chrono::local_seconds local(std::chrono::sys_seconds moment) const override {
    const std::tm local = at(moment.time_since_epoch().count());
    return std::chrono::local_seconds(moment.time_since_epoch() + std::chrono::seconds(local.tm_gmtoff));
  }

  void wait(std::chrono::milliseconds time) override { std::this_thread::sleep_for(time); }

 private:
  static std::tm now() { return at(std::time(nullptr)); }

  static std::tm at(std::time_t seconds) {
    std::tm local{};
    tzset();  // the user may have changed the time zone since the program started
    localtime_r(&seconds, &local);
    return local;
  }

  static locale_t locale_of_user() {
    const locale_t users = newlocale(LC_TIME_MASK, "", nullptr);
    return users != nullptr ? users : newlocale(LC_TIME_MASK, "C", nullptr);
  }

  std::string formatted(const char* pattern, const std::tm& time) const {
    std::array<char, 256> text{};
    return {text.data(), strftime_l(text.data(), text.size(), pattern, &time, locale_)};
  }

  const locale_t locale_ = locale_of_user();
};

/// As OpenSSL's own programs do, for those who must trust an authority of their own.
std::string own_authorities() {
  const char* const file = std::getenv("SSL_CERT_FILE");
  return file != nullptr ? file : "";
}

}  // namespace

std::unique_ptr<Clock> system_clock() {
  return std::make_unique<SystemClock>();
}

std::unique_ptr<SocketControl> system_socket() {
  return std::make_unique<CurlSocketControl>(own_authorities());
}

std::unique_ptr<WebClient> system_web_client(const std::string& agent) {
  return std::make_unique<CurlWebClient>(agent, own_authorities());
}

std::string application_data_folder(Files& files) {
  std::string folder = standard_folders::application_data();
  create_folders(files, folder);  // where this fails the folder is not there, and callers look
  return folder;
}

std::string program_file() {
  std::error_code failed;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failed);
  return failed ? std::string() : program.native();
}

std::string program_folder() {
  const std::string file = program_file();
  return file.empty() ? file : parent_folder(file);
}

std::vector<std::string> separate_arguments(int argc, char** argv) {
  return argc > 0 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

std::vector<std::string> command_line_arguments(int argc, char** argv) {
  return separate_arguments(argc, argv);
}

}  // namespace quorvel
