#pragma once

#include <string>
#include <vector>

/// What tests of common behaviour must know of the system. One definition per system.
namespace quorvel::testing::facts {

/// File names that few systems but this one allow; each ends in ".avi".
extern const std::vector<std::string> odd_names;
/// A path at which there is neither a file nor a folder.
extern const std::string device;
/// A folder on another device than the temporary one, where there is one.
extern const std::string other_device;
/// Of the calls of a run every so many are tried, other ones for each action: processes are slow to start on some
/// systems.
extern const int call_step;
/// What a file operation answers to a new name that is too long, to a folder without a place, and to a name that is
/// taken.
extern const int too_long, nowhere, taken;

}  // namespace quorvel::testing::facts
