#include "ui/menus.h"

#include <initializer_list>

#include "ui/text.h"

namespace quorvel::ui {
namespace {

struct Item {
  int command;
  const char* text = "";
  wxItemKind kind = wxITEM_NORMAL;
};
constexpr Item separator{wxID_SEPARATOR};

void fill(wxMenu& menu, std::initializer_list<Item> items) {
  for (const Item& item : items) {
    menu.Append(item.command, to_wx(item.text), wxString(), item.kind);
  }
}

}  // namespace

wxMenuBar* menu_bar() {
  auto* const bar = new wxMenuBar;
  const auto add = [bar](const char* title, std::initializer_list<Item> items) {
    auto* const menu = new wxMenu;
    fill(*menu, items);
    bar->Append(menu, title);
  };
  add("&File", {{mnuOpen, "&Add File\tCtrl+O"}, {mnuStop, "&Stop\tEsc"}, separator, {mnuExit, "E&xit\tCtrl+Q"}});
  add("&Options", {{mnuPrefs, "&Preferences"},
                   {mnuReview, "&Review First\tCtrl+R", wxITEM_CHECK},
                   {mnuWatch, "&Watch Folders\u2026"},
                   separator,
                   {mnuHistory, "&History\u2026\tCtrl+H"},
                   {mnuUndoPass, "&Undo Last Pass\tCtrl+Z"}});
  add("&Help", {{mnuHelpGuide, "Quorvel &Help\tF1"},
                {mnuUpdate, "Check For &Updates"},
                {mnuWeb, "Quorvel &Website"},
                separator,
                {mnuAbout, "&About Quorvel"}});
  return bar;
}

std::unique_ptr<wxMenu> tray_menu(const char* show) {
  auto menu = std::make_unique<wxMenu>();
  fill(*menu, {{mnuShow, show}, separator, {mnuExit2, "E&xit"}});
  return menu;
}

ListMenus::ListMenus() {
  fill(mnuList, {{mnuEditFilter, "&Edit Filter\tF2"},
                 {mnuRemFilter, "&Remove Filter\tDel"},
                 separator,
                 {mnuAddFilter, "&Add Filter"}});
  fill(mnuList2, {{mnuAddFilter2, "&Add Filter"}});
  fill(mnuList3, {{mnuInfo, "Item &Info"},
                  {mnuUndo, "&Undo Rename"},
                  {mnuSpecify, "Add &Exception"},
                  {mnuChoose, "&Choose Show\u2026"},
                  {mnuLookUp, "&Look Up Again"},
                  {mnuRetryThis, "Re&try This File"},
                  {mnuFolder, "Open &Folder"},
                  separator,
                  {mnuRetry, "&Retry Failed"}});
  fill(mnuList4, {{mnuAddEx, "&Add Exception"}, {mnuRemEx, "&Remove Exception\tDel"}});
  fill(mnuList6, {{mnuEditName, "Edit &Name\tF2"},
                  {mnuEditNumbers, "Correct &Episode\tShift+F2"},
                  separator,
                  {mnuChoose, "&Choose Show\u2026"},
                  {mnuSpecify, "Add E&xception\u2026"},
                  {mnuReviewAgain, "&Look Up Again"},
                  separator,
                  {mnuInfo, "Show &Info"},
                  {mnuFolder, "Open &Folder"}});
  fill(mnuList5, {{mnuAddEx2, "&Add Exception"}});
}

}  // namespace quorvel::ui
