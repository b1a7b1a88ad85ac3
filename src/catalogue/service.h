#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>

#include "catalogue/answer_store.h"
#include "platform/clock.h"
#include "platform/log.h"
#include "platform/user_interface.h"
#include "platform/web_client.h"
#include "transport/pace.h"

namespace quorvel {

/// The listings service as the exact way asks it: one request at a time, at the pace that the service allows, each
/// answer kept.
class CatalogueService {
 public:
  /// How old an answer may be.
  enum class Age { Any, ADay, Newest };

  CatalogueService(WebClient& web, AnswerStore& store, Pace& pace, Clock& clock, UserInterface& ui, Log& log,
                   std::string api_base);

  /// Before each pass: only then is the same thing asked for again.
  void begin_pass();

  /// The answer to a request such as "/shows/1/episodes", empty when the service knows no such thing. Throws Failure
  /// when there is no answer; one that is older than it may be is then used rather than none.
  std::string get(const std::string& request, Age age);

  /// Ends the request in progress; does nothing when there is none.
  void cancel() { cancelled_ = in_progress_; }

 private:
  std::string fetch(const std::string& request);
  WebAnswer ask(const std::string& url);
  void wait(std::chrono::milliseconds time);
  std::chrono::sys_seconds now() const;

  WebClient& web_;
  AnswerStore& store_;
  Pace& pace_;
  Clock& clock_;
  UserInterface& ui_;
  Log& log_;
  std::string api_base_;
  std::map<std::string, std::string> asked_;  // in this pass; the trouble that each request had, if any
  bool in_progress_ = false, cancelled_ = false;
};

}  // namespace quorvel
