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
#include "transport/patience.h"

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

  /// The answer to a request such as "/shows/1/episodes", its text empty when the service knows no such thing. Throws
  /// NoAnswer when there is none; one that is older than it may be is then used rather than none.
  ///
  /// While it waits, events run, and what the user does there may ask for something else: that is then asked first.
  StoredAnswer get(const std::string& request, Age age);

  /// Ends the requests in progress; does nothing when there are none.
  void cancel() { cancelled_ = in_progress_ > 0; }

 private:
  std::string fetch(const std::string& request);
  WebAnswer ask(const std::string& url);
  bool goes_on();
  std::chrono::sys_seconds now() const;

  WebClient& web_;
  AnswerStore& store_;
  Patience patience_;
  Clock& clock_;
  UserInterface& ui_;
  Log& log_;
  std::string api_base_;
  std::map<std::string, std::string> asked_;  // in this pass; the trouble that each request had, if any
  int in_progress_ = 0;
  bool cancelled_ = false;
  std::chrono::milliseconds held_up_{};  // by what events did while the request in progress waited
};

}  // namespace quorvel
