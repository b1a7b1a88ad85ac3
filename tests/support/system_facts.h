#pragma once

#include <cerrno>
#include <string>
#include <vector>

#include "file_tools.h"
#include "platform/native.h"

/// What tests of common behaviour must know of the system.
namespace quorvel::testing::facts {

inline const bool windows = native::separator == '\\';

/// File names that few systems but this one allow; each ends in ".avi".
inline const std::vector<std::string> odd_names =
    windows ? std::vector<std::string>{"日本 café.avi", "100% 'a' &b^.avi"}
            : std::vector<std::string>{"quote \".avi", "line\nbreak.avi", "caf\xE9.avi"};

/// A path at which there is neither a file nor a folder.
inline const std::string device = windows ? "NUL" : "/dev/null";

/// A folder on another device than the temporary one, where there is one; for Wine, Linux's.
inline const std::string other_device = !windows ? "/dev/shm"
                                        : std::filesystem::exists("Z:\\dev\\shm")
                                            ? "Z:\\dev\\shm"
                                            : text_of(std::filesystem::temp_directory_path());

/// What a file operation answers to a new name that is too long, to a folder without a place, to a name that is taken,
/// to a folder that has the name, and to what is no path.
inline const int too_long = windows ? 0x81 : ENAMETOOLONG, nowhere = windows ? 0x7C : ENOENT,
                 taken = windows ? 0x7E : EEXIST, taken_by_folder = windows ? 0x80 : EEXIST,
                 no_path = windows ? 0x7C : EINVAL;

}  // namespace quorvel::testing::facts
