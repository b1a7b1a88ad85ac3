#pragma once

#include <string>
#include <utility>

#include "platform/context_menu.h"
#include "platform/files.h"

namespace quorvel {

/// Three files below the folder for programs' data: a desktop entry by which "Open With" offers Quorvel among all
/// programs, a service menu for Dolphin and a script for Nautilus. Thunar keeps its own actions in one file that
/// belongs to the user, so there the desktop entry must do. It is not shown among the programs where another was
/// installed.
///
/// Each file tells by itself for which extensions it was made. One that the program has not written, or that was
/// edited since, is neither changed nor removed. The last extension takes the files with it, and the folders that
/// were made for them, as far as they are empty.
class DesktopEntries : public ContextMenu {
 public:
  /// `data_folder` is that of all programs, `program` the absolute path to start. `files` outlives this.
  DesktopEntries(Files& files, std::string data_folder, std::string program)
      : files_(files), data_folder_(std::move(data_folder)), program_(std::move(program)) {}

  void install(const std::string& extension) override;
  void remove(const std::string& extension) override;

 private:
  struct Target;
  struct State;
  static const Target targets[];

  void change(const Target& target, const std::string& extension, bool add);
  void write(const Target& target, const std::string& path, State& state);
  void remove_file(const std::string& path, int made_folders);

  Files& files_;
  const std::string data_folder_;
  const std::string program_;
};

}  // namespace quorvel
