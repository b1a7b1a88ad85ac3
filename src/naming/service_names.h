#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "naming/mask.h"
#include "platform/log.h"
#include "platform/native.h"

/// Names that come from the listings service, before they become names of files and folders.
namespace quorvel {

/// `name` without what only a malicious text holds: control characters, and the marks that turn the direction of
/// letters round and so show "avi.exe" for what is another name. A NUL stays, for it is refused later; a lone
/// left-to-right or right-to-left mark stays, for titles of right-to-left scripts do hold it. Each removal is logged.
std::string without_control_characters(const std::string& name, Log& log);

/// A show's name or a title with all its characters but those that no file can have: ":" becomes " -", "/" becomes "-",
/// the others go, and so does what without_control_characters removes. In composed form, blanks joined, none at the
/// ends.
std::string exact_name(std::string_view name);

/// Whether `name`, made of what the service `gave`, lacks characters of that which a file's name could have.
bool lacks_characters(std::string_view name, std::string_view gave);

/// Why the system would take this component of a path for something else; empty when it would not.
/// "." and ".." everywhere; where paths are written with "\", names of dots and spaces alone and those of devices
/// ("CON", "com1.avi") too. A dot at the end is none of them: there the system drops it wherever it meets the name.
std::optional<std::string> name_trouble(std::string_view name, char separator = native::separator);

/// name_trouble of the first component of `mask` that its tokens would spoil; `expand` is expand_folder or expand_name.
/// What the user has typed into the mask is intended.
std::optional<std::string> mask_trouble(std::string_view mask, const MaskValues& values,
                                        std::string (*expand)(std::string_view, const MaskValues&),
                                        char separator = native::separator);

/// `folder` with the names in it that end in dots or blanks without these, where paths are written with "\": the system
/// drops some of them and keeps others, and its file manager cannot open such a folder. A name of nothing else stays,
/// and so does a server's.
std::string without_ends(std::string folder, char separator = native::separator);

}  // namespace quorvel
