#include "ui/linux/notifications.h"

#include <gio/gio.h>

#include <optional>
#include <utility>

namespace quorvel::ui {
namespace {

constexpr const char *service = "org.freedesktop.Notifications", *object = "/org/freedesktop/Notifications";
constexpr const char* entry = "quorvel";  // of the menus, and the icon's name

/// Where nobody has started one, looking for the bus would start one for this program alone.
bool has_bus() {
  if (g_getenv("DBUS_SESSION_BUS_ADDRESS") != nullptr) return true;
  g_autofree gchar* path = g_build_filename(g_get_user_runtime_dir(), "bus", nullptr);
  return g_file_test(path, G_FILE_TEST_EXISTS) != FALSE;
}

}  // namespace

struct Notifications::Bus {
  std::function<void(const std::string&)> clicked;
  GCancellable* const cancellable = g_cancellable_new();
  GDBusConnection* connection = nullptr;
  guint subscription = 0;
  guint32 shown = 0;  // its number; 0 for none
  std::string token;
  std::optional<std::pair<std::string, std::string>> waiting;  // for the connection

  void show(const std::string& title, const std::string& text);

  /// Both come after this has gone as well, but then only say that they were cancelled.
  static void on_connected(GObject*, GAsyncResult* result, gpointer data);
  static void on_shown(GObject* source, GAsyncResult* result, gpointer data);
  static void on_signal(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar* name,
                        GVariant* parameters, gpointer data);
};

void Notifications::Bus::on_connected(GObject*, GAsyncResult* result, gpointer data) {
  GDBusConnection* const connection = g_bus_get_finish(result, nullptr);
  if (connection == nullptr) return;
  // Else the end of the bus would be this program's, in the middle of whatever it does to files.
  g_dbus_connection_set_exit_on_close(connection, FALSE);
  auto& bus = *static_cast<Bus*>(data);
  bus.connection = connection;
  bus.subscription = g_dbus_connection_signal_subscribe(connection, service, service, nullptr, object, nullptr,
                                                        G_DBUS_SIGNAL_FLAGS_NONE, on_signal, &bus, nullptr);
  if (const auto text = std::exchange(bus.waiting, {})) bus.show(text->first, text->second);
}

void Notifications::Bus::show(const std::string& title, const std::string& text) {
  GVariantBuilder actions, hints;
  g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
  g_variant_builder_add(&actions, "s", "default");  // a click on the message itself
  g_variant_builder_add(&actions, "s", "Show");
  g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
  g_variant_builder_add(&hints, "{sv}", "desktop-entry", g_variant_new_string(entry));
  g_dbus_connection_call(
      connection, service, object, service, "Notify",
      g_variant_new("(susssasa{sv}i)", title.c_str(), shown, entry, title.c_str(), text.c_str(), &actions, &hints, -1),
      G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, -1, cancellable, on_shown, this);
}

void Notifications::Bus::on_shown(GObject* source, GAsyncResult* result, gpointer data) {
  GVariant* const reply = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr);
  if (reply == nullptr) return;
  g_variant_get(reply, "(u)", &static_cast<Bus*>(data)->shown);
  g_variant_unref(reply);
}

void Notifications::Bus::on_signal(GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar* name,
                                   GVariant* parameters, gpointer data) {
  auto& bus = *static_cast<Bus*>(data);
  if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(us)")) == FALSE) return;
  guint32 number = 0;
  const gchar* text = nullptr;
  g_variant_get(parameters, "(u&s)", &number, &text);
  if (number != bus.shown) return;
  if (g_str_equal(name, "ActivationToken")) bus.token = text;
  if (g_str_equal(name, "ActionInvoked")) bus.clicked(std::exchange(bus.token, {}));
}

Notifications::Notifications(std::function<void(const std::string&)> on_click) : bus_(std::make_unique<Bus>()) {
  bus_->clicked = std::move(on_click);
  if (has_bus()) g_bus_get(G_BUS_TYPE_SESSION, bus_->cancellable, Bus::on_connected, bus_.get());
}

Notifications::~Notifications() {
  if (bus_->connection != nullptr) {
    g_dbus_connection_signal_unsubscribe(bus_->connection, bus_->subscription);
    // The last message is sent even where the program ends right after it.
    g_dbus_connection_flush_sync(bus_->connection, nullptr, nullptr);
    g_object_unref(bus_->connection);
  }
  g_cancellable_cancel(bus_->cancellable);
  g_object_unref(bus_->cancellable);
}

void Notifications::show(const std::string& title, const std::string& text) {
  if (bus_->connection != nullptr) {
    bus_->show(title, text);
  } else {
    bus_->waiting = {title, text};
  }
}

}  // namespace quorvel::ui
