#pragma once

#include <wx/menu.h>

#include <memory>

namespace quorvel::ui {

/// The commands of the menus.
enum MenuCommand {
  mnuOpen = wxID_HIGHEST + 1,
  mnuStop,
  mnuExit,
  mnuPrefs,
  mnuReview,
  mnuWatch,
  mnuHistory,
  mnuUndoPass,
  mnuHelpGuide,
  mnuUpdate,
  mnuWeb,
  mnuAbout,
  mnuShow,
  mnuExit2,
  mnuEditFilter,
  mnuRemFilter,
  mnuAddFilter,
  mnuAddFilter2,
  mnuInfo,
  mnuUndo,
  mnuSpecify,
  mnuChoose,
  mnuLookUp,
  mnuRetryThis,
  mnuFolder,
  mnuRetry,
  mnuEditName,
  mnuEditNumbers,
  mnuReviewAgain,
  mnuAddEx,
  mnuRemEx,
  mnuAddEx2,
};

wxMenuBar* menu_bar();

/// The tray's menu; `show` is the text of its first entry.
std::unique_ptr<wxMenu> tray_menu(const char* show);

/// The menus that pop up over the lists.
struct ListMenus {
  ListMenus();

  wxMenu mnuList;   // on a filter rule
  wxMenu mnuList2;  // on the filter list's empty area
  wxMenu mnuList3;  // on a queue item
  wxMenu mnuList4;  // on an exception
  wxMenu mnuList5;  // on the exception list's empty area
  wxMenu mnuList6;  // on a row of the review
};

}  // namespace quorvel::ui
