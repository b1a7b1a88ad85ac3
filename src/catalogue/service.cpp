#include "catalogue/service.h"

#include <algorithm>

#include "text/failure.h"
#include "transport/retry_after.h"

namespace quorvel {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds wait_slice(50), first_wait = std::chrono::seconds(2), patience = std::chrono::minutes(1);
constexpr int ok = 200, not_found = 404, too_many = 429, unavailable = 503;

}  // namespace

CatalogueService::CatalogueService(WebClient& web, AnswerStore& store, Pace& pace, Clock& clock, UserInterface& ui,
                                   Log& log, std::string api_base)
    : web_(web), store_(store), pace_(pace), clock_(clock), ui_(ui), log_(log), api_base_(std::move(api_base)) {}

std::chrono::sys_seconds CatalogueService::now() const {
  return std::chrono::floor<std::chrono::seconds>(clock_.utc());
}

void CatalogueService::begin_pass() {
  asked_.clear();
}

std::string CatalogueService::get(const std::string& request, Age age) {
  const std::optional<StoredAnswer> kept = store_.answer(request);
  const bool is_young = kept && now() - kept->fetched < std::chrono::days(1);
  const auto asked = asked_.find(request);
  const bool is_enough = age == Age::Any || (age == Age::ADay && is_young) || asked != asked_.end();
  if (kept && is_enough) return kept->text;
  if (asked != asked_.end()) throw Failure(asked->second);
  std::string& trouble = asked_[request];
  try {
    std::string text = fetch(request);
    store_.keep_answer(request, {text, now()});
    return text;
  } catch (const Failure& failure) {
    trouble = failure.what();
    if (cancelled_) asked_.erase(request);
    if (!kept || cancelled_) throw;
    log_.debug_log(std::string(failure.what()) + "; what is known from earlier is used", LogLevel::Normal);
    return kept->text;
  }
}

std::string CatalogueService::fetch(const std::string& request) {
  in_progress_ = true;
  cancelled_ = false;
  const struct Ending {
    bool& in_progress;
    ~Ending() { in_progress = false; }
  } ending{in_progress_};
  web_.on_wait = [this] {
    ui_.process_events();
    return !cancelled_;
  };
  log_.debug_log("Asking for " + request, LogLevel::Verbose);
  milliseconds waited{}, next = first_wait;
  while (true) {
    WebAnswer answer = ask(api_base_ + request);
    if (answer.status == ok) return std::move(answer.body);
    if (answer.status == not_found) return {};
    const std::string trouble = "The listings service answered " + std::to_string(answer.status);
    const bool is_refused = answer.status == too_many || answer.status == unavailable;
    if (is_refused) pace_.slow_down();
    const milliseconds named = time_to_wait(answer.retry_after, "", now()), time = named.count() > 0 ? named : next;
    if (!is_refused || waited + time > patience) throw Failure(trouble);
    log_.debug_log(
        trouble + "; asking again in " + std::to_string(std::max<long long>(time.count() / 1000, 1)) + " seconds",
        LogLevel::Normal);
    wait(time);
    waited += time;
    next *= 2;
  }
}

WebAnswer CatalogueService::ask(const std::string& url) {
  for (milliseconds left = pace_.claim(); left.count() > 0; left = pace_.claim()) wait(left);
  ui_.process_events();
  return web_.get(url);
}

void CatalogueService::wait(milliseconds time) {
  for (const auto until = clock_.instant() + time; clock_.instant() < until;) {
    clock_.wait(wait_slice);
    ui_.process_events();
    if (cancelled_) throw Failure("The request has been cancelled");
  }
}

}  // namespace quorvel
