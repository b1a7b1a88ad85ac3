#include "platform/linux/system_clock.h"

#include <glib.h>

#include <array>
#include <clocale>
#include <ctime>
#include <thread>

namespace quorvel {
namespace {

std::tm now() {
  const std::time_t seconds = std::time(nullptr);
  std::tm local{};
  tzset();  // the user may have changed the time zone since the program started
  localtime_r(&seconds, &local);
  return local;
}

std::string written(const char* pattern, const std::tm& time, locale_t locale) {
  std::array<char, 256> text{};
  return {text.data(), strftime_l(text.data(), text.size(), pattern, &time, locale)};
}

locale_t locale_of_user() {
  const locale_t users = newlocale(LC_TIME_MASK, "", nullptr);
  return users != nullptr ? users : newlocale(LC_TIME_MASK, "C", nullptr);
}

}  // namespace

struct SystemClock::Format {
  Format() = default;
  Format(const Format&) = delete;
  Format& operator=(const Format&) = delete;
  ~Format() { freelocale(locale); }

  locale_t locale = locale_of_user();
};

SystemClock::SystemClock() : format_(std::make_unique<Format>()) {}

SystemClock::~SystemClock() = default;

std::chrono::year_month_day SystemClock::today() const {
  const std::tm local = now();
  return std::chrono::year(local.tm_year + 1900) / (local.tm_mon + 1) / local.tm_mday;
}

std::string SystemClock::time_of_day() const {
  const std::tm local = now();
  const std::string text = written("%X", local, format_->locale);
  const bool usable = !text.empty() && g_utf8_validate_len(text.data(), text.size(), nullptr) != FALSE;
  return usable ? text : written("%H:%M:%S", local, format_->locale);
}

void SystemClock::wait(std::chrono::milliseconds time) {
  std::this_thread::sleep_for(time);
}

}  // namespace quorvel
