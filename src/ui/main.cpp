#include "platform/arguments.h"
#include "ui/app.h"

int main(int argc, char** argv) {
  wxDISABLE_DEBUG_SUPPORT();
  wxApp::SetInstance(new quorvel::ui::App(quorvel::command_line_arguments(argc, argv)));
  int toolkit_argc = 1;  // the arguments are the program's own, also those that look like the toolkit's
  return wxEntry(toolkit_argc, argv);
}
