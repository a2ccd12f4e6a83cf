// A panel's side of a menu, with the library that panels use. For each line of standard input, prints the
// menu that the item with the bus name argv[1] exports, an entry a line: "--" for a separator, "* " before an
// enabled entry,
// "[Control+q]" after one with a shortcut; then a line "end".

#include <libdbusmenu-glib/client.h>
#include <libdbusmenu-glib/menuitem.h>

#include <iostream>
#include <string>

namespace {

std::string line(const DbusmenuMenuitem* item) {
    const char* type = dbusmenu_menuitem_property_get(item, DBUSMENU_MENUITEM_PROP_TYPE);
    if (type && std::string(type) == DBUSMENU_CLIENT_TYPES_SEPARATOR)
        return "--";
    const char* label = dbusmenu_menuitem_property_get(item, DBUSMENU_MENUITEM_PROP_LABEL);
    std::string text = label ? label : "?";
    if (dbusmenu_menuitem_property_get_bool(item, DBUSMENU_MENUITEM_PROP_ENABLED))
        text.insert(0, "* ");
    if (GVariant* shortcut = dbusmenu_menuitem_property_get_variant(item, DBUSMENU_MENUITEM_PROP_SHORTCUT)) {
        const char* modifier = nullptr;
        const char* key = nullptr;
        GVariant* keys = g_variant_get_child_value(shortcut, 0);
        g_variant_get_child(keys, 0, "&s", &modifier);
        g_variant_get_child(keys, 1, "&s", &key);
        text += std::string(" [") + modifier + "+" + key + "]";
        g_variant_unref(keys);
    }
    return text;
}

void read(DbusmenuClient* client) {
    DbusmenuMenuitem* root = dbusmenu_client_get_root(client);
    for (GList* i = root ? dbusmenu_menuitem_get_children(root) : nullptr; i; i = i->next)
        std::cout << line(static_cast<DbusmenuMenuitem*>(i->data)) << '\n';
    std::cout << "end" << '\n' << std::flush;
}

gboolean onInput(GIOChannel* input, GIOCondition /*condition*/, void* client) {
    char* text = nullptr;
    if (g_io_channel_read_line(input, &text, nullptr, nullptr, nullptr) != G_IO_STATUS_NORMAL)
        std::exit(0);
    g_free(text);
    read(static_cast<DbusmenuClient*>(client));
    return TRUE;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    DbusmenuClient* client = dbusmenu_client_new(argv[1], "/MenuBar");
    GIOChannel* input = g_io_channel_unix_new(0);
    g_io_add_watch(input, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP), onInput, client);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
