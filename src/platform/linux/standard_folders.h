#pragma once

#include <optional>
#include <string>

/// Where things are on this machine, by the base-directory variables of the environment, and by the home folder where
/// they are missing or relative. No folder ends in a separator; nothing is created, and nothing need be there.
namespace quorvel::standard_folders {

std::string settings_file();

/// For the data of programs, below which each has a folder of its own.
std::string application_data();

/// For sockets and locks, reachable by the user alone; empty when the environment names none.
std::optional<std::string> runtime();

/// The running program; empty when the system does not tell.
std::string program_file();

/// The folder that holds it.
std::string program();

}  // namespace quorvel::standard_folders
