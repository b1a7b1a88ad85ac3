#pragma once

#include <string>

#include "platform/files.h"

namespace quorvel {

/// Where things are on this machine; no folder ends in a separator.
struct StandardFolders {
  std::string settings_file;
  std::string application_data;
  std::string program;
};

/// Follows the base-directory variables of the environment, and the home folder where they are missing or relative.
/// The application-data folder is created when it is missing; where that fails its path comes back all the same, and
/// is not there. `program` is empty when the system does not tell.
StandardFolders standard_folders(Files& files);

}  // namespace quorvel
