/* Shows who the owner is, over the message bus: for programs and sandboxed apps alike.
 *   cc card.c $(pkg-config --cflags --libs gio-2.0) */
#include <gio/gio.h>

int main(void) {
  GError* error = NULL;
  GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, NULL, &error);
  GVariant* reply =
      bus == NULL ? NULL
                  : g_dbus_connection_call_sync(
                        bus, "org.quenlet.Agent1", "/org/quenlet/Agent1", "org.quenlet.Agent1",
                        "GetCard", g_variant_new_parsed("(@a{sv} {'kinds': <['emailAddress']>},)"),
                        G_VARIANT_TYPE("(a{sv})"), G_DBUS_CALL_FLAGS_NONE,
                        G_MAXINT /* the owner may be asked first */, NULL, &error);
  if (reply == NULL) {
    g_printerr("no card: %s\n", error->message);
    return 1;
  }
  GVariant* card = g_variant_get_child_value(reply, 0);
  GVariant* addresses = g_variant_lookup_value(card, "emailAddresses", G_VARIANT_TYPE("aa{sv}"));
  for (gsize i = 0; i < g_variant_n_children(addresses); ++i) {
    GVariant* address = g_variant_get_child_value(addresses, i);
    const char* text = NULL;
    if (g_variant_lookup(address, "value", "&s", &text)) g_print("%s\n", text);
    g_variant_unref(address);
  }
  g_variant_unref(addresses);
  g_variant_unref(card);
  g_variant_unref(reply);
  g_object_unref(bus);
  return 0;
}
