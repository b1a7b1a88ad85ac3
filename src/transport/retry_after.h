#pragma once

#include <chrono>
#include <string_view>

namespace quorvel {

/// How long a service that refuses requests wants to be left alone, by its answer's Retry-After: a number of seconds,
/// or a date in any of the three forms that HTTP has had. Dates are compared with the answer's own Date, for the clocks
/// of two machines differ, and with `now` where that is missing. Zero when it cannot be told, or has passed.
std::chrono::seconds time_to_wait(std::string_view retry_after, std::string_view date, std::chrono::sys_seconds now);

}  // namespace quorvel
