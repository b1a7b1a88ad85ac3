#include "rules/exceptions.h"

#include "text/case.h"

namespace quorvel {

RecordFile::Fields ExceptionFormat::fields(const EFilter& exception) {
  return {exception.detectedName, exception.newName};
}

EFilter ExceptionFormat::entry(const std::vector<std::string_view>& fields) {
  EFilter exception;
  exception.detectedName = fields[0];
  exception.newName = fields[1];
  return exception;
}

std::optional<std::string> ExceptionList::replacement(std::string_view detected_name) const {
  const std::string name = lower_case(detected_name);
  for (int i = 1; i <= count(); ++i) {
    if (lower_case(at(i).detectedName) == name) return lower_case(at(i).newName);
  }
  return {};
}

}  // namespace quorvel
