#pragma once

#include <string>

namespace quorvel {

/// `path` from the root on, against the current folder, without "." and doubled separators. A ".." is followed as the
/// system would, through links. Nothing else is looked at; an empty path stays empty.
std::string absolute_path(const std::string& path);

}  // namespace quorvel
