#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/key_value_store.h"

namespace quorvel::cli {

/// The user's settings with some of them replaced for one run.
class RunStore : public KeyValueStore {
 public:
  /// What is written goes to `base`, unless it is to be kept from any change; then it lasts for the run.
  RunStore(KeyValueStore& base, bool keep_base) : base_(base), keep_base_(keep_base) {}

  void replace_string(const std::string& name, const std::string& text) { texts_[name] = text; }
  void replace_number(const std::string& name, std::uint32_t number) { numbers_[name] = number; }

  std::optional<std::string> trouble() const override { return base_.trouble(); }
  std::optional<std::string> read_string(const std::string& name) const override {
    const auto found = texts_.find(name);
    if (found != texts_.end()) return found->second;
    return erased_ ? std::nullopt : base_.read_string(name);
  }
  std::optional<std::uint32_t> read_number(const std::string& name) const override {
    const auto found = numbers_.find(name);
    if (found != numbers_.end()) return found->second;
    return erased_ ? std::nullopt : base_.read_number(name);
  }
  void write_string(const std::string& name, const std::string& text) override {
    keep_base_ ? replace_string(name, text) : base_.write_string(name, text);
  }
  void write_number(const std::string& name, std::uint32_t number) override {
    keep_base_ ? replace_number(name, number) : base_.write_number(name, number);
  }
  void erase_all() override {
    if (!keep_base_) base_.erase_all();
    texts_.clear();
    numbers_.clear();
    erased_ = keep_base_;
  }

 private:
  KeyValueStore& base_;
  bool keep_base_;
  bool erased_ = false;  // as far as this run can see
  std::map<std::string, std::string> texts_;
  std::map<std::string, std::uint32_t> numbers_;
};

}  // namespace quorvel::cli
