#include "catalogue/service.h"

#include <algorithm>

#include "text/failure.h"
#include "text/restored.h"
#include "transport/no_answer.h"
#include "transport/retry_after.h"

namespace quorvel {
namespace {

using std::chrono::milliseconds;

// Of what an event does; the network may have lost patience by then.
constexpr milliseconds long_hold_up = std::chrono::seconds(2);
constexpr const char* cancelled = "The request has been cancelled";
constexpr int ok = 200, not_found = 404, too_many = 429, unavailable = 503;

}  // namespace

CatalogueService::CatalogueService(WebClient& web, AnswerStore& store, Pace& pace, Clock& clock, UserInterface& ui,
                                   Log& log, std::string api_base)
    : web_(web),
      store_(store),
      patience_(pace, clock, log),
      clock_(clock),
      ui_(ui),
      log_(log),
      api_base_(std::move(api_base)) {
  patience_.on_slice = [this](milliseconds) { return goes_on(); };
  web_.on_wait = [this] { return goes_on(); };
}

std::chrono::sys_seconds CatalogueService::now() const {
  return std::chrono::floor<std::chrono::seconds>(clock_.utc());
}

void CatalogueService::begin_pass() {
  asked_.clear();
}

StoredAnswer CatalogueService::get(const std::string& request, Age age) {
  const std::optional<StoredAnswer> kept = store_.answer(request);
  const bool is_young = kept && now() - kept->fetched < std::chrono::days(1);
  const auto asked = asked_.find(request);
  const bool is_enough = age == Age::Any || (age == Age::ADay && is_young) || asked != asked_.end();
  if (kept && is_enough) return *kept;
  if (asked != asked_.end()) throw NoAnswer(asked->second);
  try {
    StoredAnswer answer = {fetch(request), now()};
    store_.keep_answer(request, answer);
    asked_[request].clear();
    return answer;
  } catch (const Failure& failure) {
    if (cancelled_) throw;
    asked_[request] = failure.what();
    if (!kept) throw NoAnswer(failure.what());
    log_.debug_log(std::string(failure.what()) + "; what is known from earlier is used", LogLevel::Normal);
    return *kept;
  }
}

std::string CatalogueService::fetch(const std::string& request) {
  if (in_progress_ == 0) cancelled_ = false;
  const Restored<int> counted(in_progress_, in_progress_ + 1);
  log_.debug_log("Asking for " + request, LogLevel::Verbose);
  while (true) {
    WebAnswer answer = ask(api_base_ + request);
    const bool is_refused = answer.status == too_many || answer.status == unavailable;
    if (!is_refused) patience_.renew();
    if (answer.status == ok) return std::move(answer.body);
    if (answer.status == not_found) return {};
    const std::string trouble = "The listings service answered " + std::to_string(answer.status);
    if (is_refused && patience_.wait_after_refusal(time_to_wait(answer.retry_after, "", now()), trouble)) continue;
    throw Failure(cancelled_ ? cancelled : trouble);
  }
}

WebAnswer CatalogueService::ask(const std::string& url) {
  while (true) {
    if (!patience_.wait_for_turn()) throw Failure(cancelled);
    ui_.process_events();
    held_up_ = {};
    try {
      return web_.get(url);
    } catch (const Failure&) {
      if (cancelled_ || held_up_ < long_hold_up) throw;
    }
  }
}

/// Lets events run; false when the user does not want the answer any more. An event may open a dialog, which holds this
/// up for as long as it is open.
bool CatalogueService::goes_on() {
  const auto before = clock_.instant();
  ui_.process_events();
  held_up_ += std::chrono::duration_cast<milliseconds>(clock_.instant() - before);
  return !cancelled_;
}

}  // namespace quorvel
