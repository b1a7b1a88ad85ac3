#include "queue/identification.h"

#include "naming/reader/reading_text.h"
#include "naming/service_names.h"

namespace quorvel {

NameFacts facts_in(const Reading& reading) {
  NameFacts facts;
  if (reading.year) facts.year = std::to_string(*reading.year);
  facts.country = exact_name(reading.country);
  if (reading.date) {
    facts.date = facts.named_date = date_text(*reading.date);
    facts.named_year = std::to_string(reading.date->year);
  }
  if (!reading.absolute.empty()) facts.absolute = std::to_string(reading.absolute.front());
  facts.resolution = exact_name(reading.resolution);
  facts.source = exact_name(reading.source);
  facts.group = exact_name(reading.group);
  if (reading.part) facts.part = std::to_string(*reading.part);
  return facts;
}

}  // namespace quorvel
