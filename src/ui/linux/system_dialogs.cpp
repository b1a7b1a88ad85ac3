#include "ui/system_dialogs.h"

namespace quorvel::ui {

bool cancel_system_dialogs() {
  return false;  // the toolkit runs them all
}

}  // namespace quorvel::ui
