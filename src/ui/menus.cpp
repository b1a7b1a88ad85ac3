#include "ui/menus.h"

namespace quorvel::ui {

wxMenuBar* menu_bar() {
  auto* const mnuFile = new wxMenu;
  mnuFile->Append(mnuOpen, "&Add File\tCtrl+O");
  mnuFile->AppendSeparator();
  mnuFile->Append(mnuExit, "E&xit\tCtrl+Q");
  auto* const mnuOptions = new wxMenu;
  mnuOptions->Append(mnuPrefs, "&Preferences");
  auto* const mnuHelp = new wxMenu;
  mnuHelp->Append(mnuHelpGuide, "Quorvel &Help\tF1");
  mnuHelp->Append(mnuUpdate, "Check For &Updates");
  mnuHelp->Append(mnuWeb, "Quorvel &Website");
  mnuHelp->AppendSeparator();
  mnuHelp->Append(mnuAbout, "&About Quorvel");

  auto* const bar = new wxMenuBar;
  bar->Append(mnuFile, "&File");
  bar->Append(mnuOptions, "&Options");
  bar->Append(mnuHelp, "&Help");
  return bar;
}

std::unique_ptr<wxMenu> tray_menu(const wxString& show) {
  auto menu = std::make_unique<wxMenu>();
  menu->Append(mnuShow, show);
  menu->AppendSeparator();
  menu->Append(mnuExit2, "E&xit");
  return menu;
}

ListMenus::ListMenus() {
  mnuList.Append(mnuEditFilter, "&Edit Filter\tF2");
  mnuList.Append(mnuRemFilter, "&Remove Filter\tDel");
  mnuList.AppendSeparator();
  mnuList.Append(mnuAddFilter, "&Add Filter");

  mnuList2.Append(mnuAddFilter2, "&Add Filter");

  mnuList3.Append(mnuInfo, "Item &Info");
  mnuList3.Append(mnuUndo, "&Undo Rename");
  mnuList3.Append(mnuSpecify, "Add &Exception");
  mnuList3.AppendSeparator();
  mnuList3.Append(mnuRetry, "&Retry Failed");

  mnuList4.Append(mnuAddEx, "&Add Exception");
  mnuList4.Append(mnuRemEx, "&Remove Exception\tDel");

  mnuList5.Append(mnuAddEx2, "&Add Exception");
}

}  // namespace quorvel::ui
