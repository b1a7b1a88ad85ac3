#pragma once

#include <string_view>

/// What is a plain value of the system: each has one definition per system, chosen by the build.
namespace quorvel::native {

/// What stands between the components of a path.
extern const char separator;

/// The system's name as error texts give it.
extern const std::string_view system_name;

/// The code a file operation answers when a file was to go to the trash and its file system has none.
extern const int no_trash_code;

}  // namespace quorvel::native
