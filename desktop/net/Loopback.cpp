#include "desktop/net/Loopback.h"

#include "desktop/glib/Owned.h"
#include "desktop/net/HttpAddress.h"

#include <libsoup/soup.h>

namespace qoro
{

namespace
{

void free_addresses(GSList* uris)
{
    g_slist_free_full(uris, [](gpointer uri) { g_uri_unref(static_cast<GUri*>(uri)); });
}

} // namespace

Listening listen_on_loopback(SoupServer* server)
{
    Error failed;
    if (!soup_server_listen_local(server, 0, SOUP_SERVER_LISTEN_IPV4_ONLY, failed.out()))
        return {.host = "", .error = failed.message()};
    const Owned<GSList, free_addresses> uris(soup_server_get_uris(server));
    return {.host = HttpAddress(static_cast<GUri*>(uris->data)).host_and_port(), .error = ""};
}

} // namespace qoro
