// The whole program, and the window on a desktop with what belongs to one.
#include <atspi/atspi.h>
#include <gtk/gtk.h>
#include <wx/display.h>
#include <wx/uiaction.h>

#include "child_process.h"
#include "listings_service.h"
#include "shell/commands.h"
#include "test_window.h"
#include "ui/icons.h"

namespace quorvel::testing {

TEST_F(TestWindow, ASecondStartHandsItsFolderOverAndTheUpdaterClosesTheFirst) {
  const ListingsService real;
  const Variable base("QUORVEL_API_BASE", real.base());
  const ChildProcess asked({.program = QUORVEL_PROGRAM,
                            .arguments = {"--version"},
                            .environment = {{"DISPLAY", ""}},
                            .out = folder / "out"});
  EXPECT_TRUE(asked.status() == 0 && read("out") == "quorvel 3.4.0\n");
  const ChildProcess unseen({.program = QUORVEL_PROGRAM, .environment = {{"DISPLAY", ""}}, .error = folder / "out"});
  EXPECT_TRUE(unseen.status() != 0 && read("out").starts_with("quorvel: there is no display")) << read("out");
  const std::string early = file("harbour.lights.s01e01.avi"), late = file("Lights/harbour.lights.s01e02.avi");
  ChildProcess first({.program = QUORVEL_PROGRAM, .arguments = {early}});
  wait_until([&] { return exists("in/The Harbour Lights - 1x01 - Slack Water.avi"); });
  ChildProcess second({.program = QUORVEL_PROGRAM, .arguments = {folder / "in/Lights"}});
  EXPECT_EQ(second.status(), 0);
  wait_until([&] { return exists("in/Lights/The Harbour Lights - 1x02 - The Pilot Boat.avi"); });
  EXPECT_EQ(everything_in(folder / "in").size(), 3U);
  const auto channel = system_instance_channel("Quorvel", "Quorvel 3.4");
  ASSERT_FALSE(channel->become_running_copy());
  channel->send("QV|UD|");
  EXPECT_EQ(first.status(), 0);
  EXPECT_TRUE(channel->become_running_copy());
  const std::string build = std::filesystem::path(QUORVEL_PROGRAM).parent_path();
  EXPECT_TRUE(files->exists(help_file({build, build, {}, {}}))) << "the help that the build has made";
}

template <typename T>
using Held = std::unique_ptr<T, decltype(&g_object_unref)>;

/// What screen readers are told of a thing, and of what is in it: "role name" or "role name, selected", then the parts.
static std::string told(AtspiAccessible* thing) {
  g_autofree const gchar *role = atspi_accessible_get_role_name(thing, nullptr),
                         *name = atspi_accessible_get_name(thing, nullptr);
  const Held<AtspiStateSet> states(atspi_accessible_get_state_set(thing), g_object_unref);
  const bool is_selected = atspi_state_set_contains(states.get(), ATSPI_STATE_SELECTED) != FALSE;
  std::string all = std::string(role) + " " + name + (is_selected ? ", selected" : "") + "(";
  const int parts = atspi_accessible_get_child_count(thing, nullptr);
  for (int i = 0; i < parts; ++i) {
    const Held<AtspiAccessible> part(atspi_accessible_get_child_at_index(thing, i, nullptr), g_object_unref);
    if (part != nullptr) all += told(part.get());
  }
  return all + ")";
}

TEST_F(TestWindow, ScreenReadersAreToldWhatIsInTheLists) {
  const Variable display("DISPLAY", Variable::get("DISPLAY")), address("DBUS_SESSION_BUS_ADDRESS", "");
  g_autoptr(GTestDBus) bus = g_test_dbus_new(G_TEST_DBUS_NONE);
  g_test_dbus_add_service_dir(bus, "/usr/share/dbus-1/services");
  g_test_dbus_up(bus);
  set_variable("DISPLAY", gdk_display_get_name(gdk_display_get_default()));  // which that has taken away
  const ListingsService real;
  const Variable base("QUORVEL_API_BASE", real.base());
  ChildProcess program({.program = QUORVEL_PROGRAM,
                        .arguments = {file("harbour.lights.s01e01.avi")},
                        .environment = {{"NO_AT_BRIDGE", "0"}}});
  wait_until([&] { return exists("in/The Harbour Lights - 1x01 - Slack Water.avi"); });
  atspi_init();
  std::string all;
  wait_until([&] {
    const Held<AtspiAccessible> everything(atspi_get_desktop(0), g_object_unref);
    atspi_accessible_clear_cache(everything.get());
    return (all = told(everything.get())).find("All items processed()") != std::string::npos;
  });
  const auto is_told = [&](const std::string& part) { return all.find(part) != std::string::npos; };
  EXPECT_TRUE(is_told("page tab File Queue, selected(") && is_told("page tab Filter List(")) << all;
  EXPECT_TRUE(
      is_told("table File Queue(table column header Filename()table column header New Name()table column header "
              "Status()table cell , selected(table cell , selected()table cell harbour.lights.s01e01, selected("
              "))table cell The Harbour Lights - 1x01 - Slack Water, selected()table cell Done, selected())"))
      << all;
  EXPECT_TRUE(is_told("table cell Show Name Equals Anything()table cell Rename()")) << all;
  EXPECT_TRUE(is_told("table Exceptions(") && is_told("table Log(")) << all;
  program.kill();
  g_test_dbus_stop(bus);
}

/// The desktop's service for messages, on a bus of its own; it keeps them.
class MessageService {
 public:
  std::string shown;

  MessageService() {
    g_test_dbus_up(bus_);
    set_variable("DISPLAY", gdk_display_get_name(gdk_display_get_default()));  // which that has taken away
    connection_ =
        g_dbus_connection_new_for_address_sync(g_test_dbus_get_bus_address(bus_),
                                               GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                                    G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
                                               nullptr, nullptr, nullptr);
    g_autoptr(GDBusNodeInfo) node = g_dbus_node_info_new_for_xml(
        "<node><interface name='org.freedesktop.Notifications'><method name='Notify'>"
        "<arg type='s' direction='in'/><arg type='u' direction='in'/><arg type='s' direction='in'/>"
        "<arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='as' direction='in'/>"
        "<arg type='a{sv}' direction='in'/><arg type='i' direction='in'/><arg type='u' direction='out'/>"
        "</method></interface></node>",
        nullptr);
    static const GDBusInterfaceVTable calls = {on_call, nullptr, nullptr, {}};
    g_dbus_connection_register_object(connection_, path, node->interfaces[0], &calls, this, nullptr, nullptr);
    g_variant_unref(g_dbus_connection_call_sync(connection_, "org.freedesktop.DBus", "/", "org.freedesktop.DBus",
                                                "RequestName", g_variant_new("(su)", name, 0), nullptr,
                                                G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  }
  ~MessageService() {
    g_object_unref(connection_);
    g_test_dbus_stop(bus_);
    g_object_unref(bus_);
  }
  void click() {
    for (const char* const signal : {"ActivationToken", "ActionInvoked"}) {
      g_dbus_connection_emit_signal(connection_, nullptr, path, name, signal, g_variant_new("(us)", 7, "default"),
                                    nullptr);
    }
  }

 private:
  static constexpr const char *name = "org.freedesktop.Notifications", *path = "/org/freedesktop/Notifications";

  static void on_call(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* parameters,
                      GDBusMethodInvocation* call, gpointer data) {
    const gchar *title = nullptr, *text = nullptr;
    guint32 replaced = 0;
    g_variant_get(parameters, "(&su&s&s&sasa{sv}i)", nullptr, &replaced, nullptr, &title, &text, nullptr, nullptr,
                  nullptr);
    static_cast<MessageService*>(data)->shown += std::to_string(replaced) + " " + title + ": " + text + ";";
    g_dbus_method_invocation_return_value(call, g_variant_new("(u)", 7));
  }

  const Variable display_{"DISPLAY", Variable::get("DISPLAY")}, address_{"DBUS_SESSION_BUS_ADDRESS", ""};
  GTestDBus* const bus_ = g_test_dbus_new(G_TEST_DBUS_NONE);
  GDBusConnection* connection_ = nullptr;
};

TEST_F(TestWindow, WhatComesOfAPassIsToldOnTheDesktopUnlessTheWindowIsInFrontAndAClickBringsItUp) {
  MessageService service;
  start();
  frame->life().lives_in_tray = [] { return true; };
  std::string seen;
  for (const char* const name : {"harbour.lights.s01e01.avi", "harbour.lights.s01e02.avi", "holiday.avi"}) {
    drop({file(name)});
    wait_until([&] { return has_ended(session->queue.at(session->queue.count()).state); });
    if (!frame->IsShown()) wait_until([&] { return !service.shown.empty(); });
    seen += std::exchange(service.shown, {});
    frame->minimise();
    wait_until([&] { return !frame->IsShown() && !frame->life().is_in_front(); });
  }
  EXPECT_EQ(seen, "0 Quorvel: 1 renamed;7 Quorvel: 1 needs you;");
  service.click();
  wait_until([&] { return frame->IsShown() && frame->IsActive(); });
  frame->unload();
  wait_for_the_end();
}

TEST_F(TestWindow, ATrayThatComesLaterTakesTheWindowAndADoubleClickOnTheIconCountsOnce) {
  start();
  frame->minimise();
  wait_until([&] { return frame->IsIconized(); });
  const ChildProcess tray(
      {.program = "/usr/bin/trayer", .arguments = {"--edge", "top", "--align", "left", "--widthtype", "request"}});
  wait_until([&] { return !frame->IsShown(); });
  wxUIActionSimulator mouse;
  mouse.MouseMove(12, 12);
  wait_until([&] {  // the icon may not have come yet
    mouse.MouseDblClick();
    wxTheApp->Yield();
    return frame->IsShown();
  });
  wait_until([&] { return frame->IsActive(); });  // by then the second click has come as well
  EXPECT_TRUE(frame->IsShown());
}

static void enlarge_letters(int times) {
  g_object_set(gtk_settings_get_default(), "gtk-xft-dpi", times * 96 * 1024, nullptr);
}

TEST_F(TestWindow, LargeLettersEnlargeTheWindowAsFarAsTheDisplayGoes) {
  start();
  const wxSize ordinary = frame->GetSize();
  const int icon = ui::icons::rows(*frame)[0].GetDefaultSize().x;
  frame->unload();
  wait_for_the_end();
  enlarge_letters(2);
  start();
  const wxRect room = wxDisplay(frame.get()).GetClientArea();
  EXPECT_EQ(frame->GetSize(), wxSize(std::min(2 * ordinary.x, room.width), std::min(2 * ordinary.y, room.height)));
  EXPECT_TRUE(room.Contains(frame->GetRect()));
  const wxRect log = find(*frame, "List3").GetScreenRect();
  EXPECT_TRUE(log.height >= 200 && frame->GetScreenRect().Contains(log));
  EXPECT_GT(ui::icons::rows(*frame)[0].GetDefaultSize().x, icon * 3 / 2);
  enlarge_letters(3);
  on_dialog([](wxDialog& dialog) {
    EXPECT_GT(find(dialog, "txtTypes").GetSize().y, dialog.GetCharHeight());
    EXPECT_GT(dialog.FindWindow(wxID_CANCEL)->GetSize().y, dialog.GetCharHeight());
    press(dialog, "Cancel");
  });
  command(ui::mnuPrefs);
  enlarge_letters(1);
}

}  // namespace quorvel::testing
