#include "desktop/net/RedirectGuard.h"

#include "kit/Loopback.h"

#include <libsoup/soup.h>

namespace qoro
{

namespace
{

bool leads_here(GUri* uri)
{
    char* text = g_uri_to_string(uri);
    const bool here = is_loopback_address(text);
    g_free(text);
    return here;
}

} // namespace

RedirectGuard::RedirectGuard(SoupMessage* message, GUri* asked, GCancellable* request)
    : message_(static_cast<SoupMessage*>(g_object_ref(message))), request_(request)
{
    if (!leads_here(asked))
        g_signal_connect(message_, "restarted", G_CALLBACK(restarted), this);
}

RedirectGuard::~RedirectGuard()
{
    g_signal_handlers_disconnect_by_data(message_, this);
    g_object_unref(message_);
}

void RedirectGuard::restarted(SoupMessage* message, RedirectGuard* guard)
{
    if (!leads_here(soup_message_get_uri(message)))
        return;
    guard->has_acted_ = true;
    g_cancellable_cancel(guard->request_);
}

} // namespace qoro
