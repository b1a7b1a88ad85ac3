#pragma once

#include <exception>
#include <map>
#include <string>

#include "text/failure.h"

namespace quorvel {

/// What a pass has not found, so that the service is not asked for it again with each further file.
class Unfound {
 public:
  void forget() { reasons_.clear(); }

  /// What `find` gives, or nothing, without calling it, when that was nothing for the same key before; a Failure that
  /// it threw then is thrown again.
  template <typename Find>
  auto unless_known(const std::string& key, Find find) -> decltype(find()) {
    if (const auto known = reasons_.find(key); known != reasons_.end()) {
      if (!known->second) return {};
      std::rethrow_exception(known->second);
    }
    try {
      auto found = find();
      if (!found) reasons_[key] = {};
      return found;
    } catch (const Failure&) {
      reasons_[key] = std::current_exception();
      throw;
    }
  }

 private:
  std::map<std::string, std::exception_ptr> reasons_;  // null where the service had an answer
};

}  // namespace quorvel
