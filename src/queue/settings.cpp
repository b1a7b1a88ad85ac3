#include "queue/settings.h"

#include "naming/file_names.h"
#include "text/case.h"

namespace quorvel {
namespace {

template <auto Member>
constexpr NumberSetting number(std::string_view name, int missing, int off, int on, NumberSetting::Others others,
                               std::string_view meaning) {
  return {name,
          [](const Settings& settings) { return static_cast<int>(settings.*Member); },
          [](Settings& settings, int value) {
            settings.*Member = static_cast<std::decay_t<decltype(settings.*Member)>>(value);
          },
          missing,
          off,
          on,
          others,
          meaning};
}

}  // namespace

const std::array<TextSetting, 4> text_settings = {{
    {"types", &Settings::types, 3, "extensions of the files to take, such as \"avi;mkv\""},
    {"companions", &Settings::companions, 0, "endings of what goes with them, such as \"srt;nfo\""},
    {"leftovers", &Settings::leftovers, 1, "files that make no folder worth keeping"},
    {"watched", &Settings::watched, 0, "folders that the window watches, a line each"},
}};

const std::array<NumberSetting, 14> number_settings = {{
    number<&Settings::context>("context", 0, 1, 2, NumberSetting::MeanOn, "2: entries in the file manager's menus"),
    number<&Settings::confirm>("confirm", 0, 0, 1, NumberSetting::MeanOn, "1: ask before each file operation"),
    number<&Settings::nocache>("nocache", 0, 0, 1, NumberSetting::MeanOn, "1: ask the service anew for everything"),
    number<&Settings::noutf8>("noutf8", 0, 0, 1, NumberSetting::MeanOn, "1: take titles as bytes, not as UTF-8"),
    number<&Settings::logging>("logging", 1, 1, 2, NumberSetting::MeanOff, "1: log results, 2: every step"),
    number<&Settings::autoclose>("autoclose", 0, 0, 1, NumberSetting::MeanOff, "1: end when all files are processed"),
    number<&Settings::verify>("verify", 0, 0, 1, NumberSetting::MeanOn, "1: compare what is moved to another drive"),
    number<&Settings::exact>("exact", 0, 0, 1, NumberSetting::MeanOn, "1: exact names"),
    number<&Settings::strict>("strict", 0, 0, 1, NumberSetting::MeanOn, "1: what may be read otherwise fails"),
    number<&Settings::review>("review", 0, 0, 1, NumberSetting::MeanOn,
                              "1: the window shows everything before it is done"),
    number<&Settings::tidy>("tidy", 0, 0, 1, NumberSetting::MeanOn, "1: emptied folders go to the trash"),
    number<&Settings::history>("history", 730, 730, 730, NumberSetting::Stay, "days for which undo is remembered"),
    number<&Settings::watching>("watching", 0, 0, 1, NumberSetting::MeanOff, "1: the window watches them"),
    number<&Settings::settle>("settle", 30, 30, 30, NumberSetting::Stay,
                              "seconds that a watched file must stay as it is"),
}};

bool is_listed(const Settings& settings, std::string_view name) {
  return lower_case(settings.types).find(getextension(name)) != std::string::npos;
}

void NumberSetting::read(Settings& settings, int stored) const {
  const bool known = stored == off || stored == on || (others == Stay && stored != 0);
  set(settings, known ? stored : stored == 0 ? missing : others == MeanOn ? on : off);
}

}  // namespace quorvel
