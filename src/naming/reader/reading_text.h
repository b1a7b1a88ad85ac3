#pragma once

#include <string>

#include "naming/reader/reading.h"

/// What a name says, in words for people.
namespace quorvel {

/// "2011-04-18".
std::string date_text(const Date& date);

/// "season 2, episodes 5, 6"; empty where no episode is named.
std::string number_text(const Reading& reading);

/// The show, with its year and country where they are said: "The Office" (2005) (US), or "no show".
std::string show_text(const Reading& reading);

}  // namespace quorvel
