#pragma once

#include <string>
#include <utility>

#include "platform/context_menu.h"

namespace quorvel {

/// Verbs in the registry's class registrations: a key "shell\Quorvel\command" whose value starts the program with the
/// selected path, unquoted.
class ExplorerVerbs : public ContextMenu {
 public:
  /// `program`: the full path of the program to start.
  explicit ExplorerVerbs(std::string program) : program_(std::move(program)) {}

  /// A type without a class is given one, its name in lower case and "file"; it stays when the verb is removed.
  void install(const std::string& extension) override;

  /// Nothing for a type without a class, not even its entry under "SystemFileAssociations".
  void remove(const std::string& extension) override;

 private:
  const std::string program_;
};

}  // namespace quorvel
