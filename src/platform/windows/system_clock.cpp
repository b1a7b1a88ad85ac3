#include "platform/windows/system_clock.h"

#include <windows.h>

#include <array>

#include "platform/windows/wide.h"

namespace quorvel {
namespace {

SYSTEMTIME now() {
  SYSTEMTIME local{};
  GetLocalTime(&local);
  return local;
}

}  // namespace

std::chrono::year_month_day SystemClock::today() const {
  const SYSTEMTIME local = now();
  return std::chrono::year(local.wYear) / local.wMonth / local.wDay;
}

std::string SystemClock::time_of_day() const {
  const SYSTEMTIME local = now();
  std::array<wchar_t, 256> text{};
  const int size =
      GetTimeFormatEx(LOCALE_NAME_USER_DEFAULT, 0, &local, nullptr, text.data(), static_cast<int>(text.size()));
  return size <= 0 ? std::string() : to_utf8({text.data(), static_cast<std::size_t>(size) - 1});
}

void SystemClock::wait(std::chrono::milliseconds time) {
  Sleep(static_cast<DWORD>(time.count()));
}

}  // namespace quorvel
