#pragma once

#include <functional>
#include <string>

#include "platform/log.h"
#include "queue/queue_item.h"
#include "queue/settings.h"

namespace quorvel {

/// How the identification of an item has ended.
struct Identified {
  enum Outcome { Found, Failed, Interrupted };

  Outcome outcome = Found;
  std::string log_line = {}, error_text = {};  // when it failed: for the log, if any, and for the item
  bool no_answer = false;                      // of the service was why
};

/// What a name says that a new name can hold as well.
NameFacts facts_in(const Reading& reading);

/// A way of finding out which episode a file is: what its name says, and what the listings service knows of that.
class Identification {
 public:
  Identification(const Settings& settings, Log& log) : settings_(settings), log_(log) {}
  /// Called with each state that the item reaches; false when the user wants no more of this item.
  using Reached = std::function<bool(QueueState)>;

  virtual ~Identification() = default;

  /// Before each pass.
  virtual void begin_pass() = 0;

  /// Fills in all of the item up to what the rules look at, from Scanning on. Interrupted as soon as `reached` says so;
  /// the item then keeps the state it has.
  virtual Identified identify(QueueItem& item, const Reached& reached) = 0;

 protected:
  /// Notes what a person should look at. False when such items are to fail.
  bool may_go_on_with(QueueItem& item, const std::string& doubt) {
    item.doubts.push_back(doubt);
    log_.debug_log(item.filename + ": " + doubt, LogLevel::Normal);
    return !settings_.strict;
  }

  const Settings& settings_;
  Log& log_;
};

}  // namespace quorvel
