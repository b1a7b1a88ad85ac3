#include "transport/pace.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "text/cut.h"

namespace quorvel {
namespace {

using std::chrono::milliseconds;
using Times = std::vector<milliseconds>;

constexpr std::size_t max_requests = 20;
constexpr milliseconds period{10'250};  // a little more, for the way to the service varies
constexpr milliseconds memory = std::chrono::minutes(10);
constexpr int attempts = 10;
constexpr milliseconds until_next_attempt{5};

/// Whatever else stands there is left out.
Times times_of(std::string_view text) {
  Times times;
  for (const std::string_view line : split(text, "\n")) {
    milliseconds::rep count = 0;
    if (std::from_chars(line.data(), line.data() + line.size(), count).ec == std::errc()) times.emplace_back(count);
  }
  return times;
}

std::string text_of(const Times& times) {
  std::string text;
  for (const milliseconds time : times) text += std::to_string(time.count()) + "\n";
  return text;
}

/// Those that matter, in their order. What lies ahead is of a time before the system was started anew.
void keep_recent(Times& times, milliseconds now) {
  std::erase_if(times, [now](milliseconds time) { return time > now || time <= now - period; });
  std::sort(times.begin(), times.end());
}

}  // namespace

/// Copies of one machine share it.
milliseconds Pace::now() const {
  return std::chrono::duration_cast<milliseconds>(clock_.instant().time_since_epoch());
}

/// Null when no file can be shared; then this copy keeps the pace for itself.
std::unique_ptr<HeldFile> Pace::hold() {
  for (int attempt = 0; attempt < attempts; ++attempt) {
    if (attempt > 0) clock_.wait(until_next_attempt);  // others hold it for an instant
    if (std::unique_ptr<HeldFile> file = files_.hold(path())) return file;
  }
  return {};
}

/// By any copy's request.
bool Pace::has_been_refused_lately() const {
  const Times times = times_of(files_.read(path()).value_or(""));
  return std::any_of(times.begin(), times.end(),
                     [now = now()](milliseconds time) { return time <= now && time > now - memory; });
}

milliseconds Pace::claim() {
  if (!is_slow_ && has_been_refused_lately()) slow_down();
  if (is_slow_) {
    const std::unique_ptr<HeldFile> file = hold();
    Times times = file ? times_of(file->read()) : own_;
    keep_recent(times, now());
    if (times.size() >= max_requests) return times[times.size() - max_requests] + period - now();
    times.push_back(now());
    if (file) file->write(text_of(times), false);
  }
  own_.push_back(now());
  if (own_.size() > max_requests) own_.erase(own_.begin());
  return milliseconds(0);
}

void Pace::slow_down() {
  if (std::exchange(is_slow_, true)) return;
  const std::unique_ptr<HeldFile> file = hold();
  if (!file) return;
  Times times = times_of(file->read());
  times.insert(times.end(), own_.begin(), own_.end());
  keep_recent(times, now());
  file->write(text_of(times), false);
}

}  // namespace quorvel
