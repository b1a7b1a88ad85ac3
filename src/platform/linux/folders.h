#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/files.h"

namespace quorvel {

/// The folder that holds the entry `path` names: "." for a bare name, "/" for the root itself.
std::string parent_folder(const std::string& path);

/// Makes up names in `folder` that nothing else uses, short enough for every file system, and hands each to `create`
/// until it answers something else than EEXIST, which comes back; `path` is then the last name tried.
int create_temporary(const std::string& folder, std::string& path,
                     const std::function<int(const std::string& path)>& create);

/// Returns once the folder's entries are on disk. 0 or an errno value; file systems that cannot flush a folder count
/// as done.
int sync_folder(const std::string& folder);

/// Creates whatever is missing of the folder `path`, level by level. False when there is no such folder afterwards.
bool create_folders(Files& files, const std::string& path);

/// Where things are on this machine, by the base-directory variables of the environment, and by the home folder where
/// they are missing or relative. No folder ends in a separator; nothing is created, and nothing need be there.
namespace standard_folders {

/// For the settings of programs, below which each has a folder of its own.
std::string settings();

/// The same for their data.
std::string application_data();

/// For sockets and locks, reachable by the user alone; empty when the environment names none.
std::optional<std::string> runtime();

}  // namespace standard_folders
}  // namespace quorvel
