#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace quorvel {

/// What a rule does with a file. Rule files may hold other numbers, which do nothing.
enum Action { Rename = 1, MoveAndRename = 2, CopyAndRename = 3, HardLinkAndRename = 4, SymbolicLinkAndRename = 5 };

/// How an action is called.
struct ActionWords {
  int action;
  std::string_view name;        // in lists
  std::string_view word;        // in the terminal and in plans
  std::string_view verb;        // in questions and titles
  std::string_view participle;  // what files are then
  std::string_view at_work;     // of a file that it is being done to
  std::string_view undo;        // in menus
};

inline constexpr auto actions = std::to_array<ActionWords>({
    {Rename, "Rename", "rename", "Rename", "renamed", "Renaming", "Undo Rename"},
    {MoveAndRename, "Move & Rename", "move", "Move", "moved", "Moving", "Undo Move/Rename"},
    {CopyAndRename, "Copy & Rename", "copy", "Copy", "copied", "Copying", "Undo Copy/Rename"},
    {HardLinkAndRename, "Hard Link & Rename", "hardlink", "Link", "linked", "Linking", "Undo Link"},
    {SymbolicLinkAndRename, "Symbolic Link & Rename", "symlink", "Link", "linked", "Linking", "Undo Link"},
});

/// Null for other values.
constexpr const ActionWords* words_of(int action) {
  const auto* const found = std::ranges::find(actions, action, &ActionWords::action);
  return found == actions.end() ? nullptr : &*found;
}

/// As in ActionWords, empty for other values.
constexpr std::string_view action_name(int action) {
  const ActionWords* const words = words_of(action);
  return words == nullptr ? std::string_view() : words->name;
}

/// As in ActionWords, empty for other values.
constexpr std::string_view action_word(int action) {
  const ActionWords* const words = words_of(action);
  return words == nullptr ? std::string_view() : words->word;
}

/// 0 for a word that is none of theirs.
constexpr int action_named(std::string_view word) {
  const auto* const found = std::ranges::find(actions, word, &ActionWords::word);
  return found == actions.end() ? 0 : found->action;
}

constexpr bool is_link(int action) {
  return action == HardLinkAndRename || action == SymbolicLinkAndRename;
}

/// Whether the file is not where it was afterwards.
constexpr bool takes_source(int action) {
  return action == Rename || action == MoveAndRename;
}

/// Whether the files go to a folder of the rule's.
constexpr bool has_folder(int action) {
  return action != Rename && words_of(action) != nullptr;
}

}  // namespace quorvel
