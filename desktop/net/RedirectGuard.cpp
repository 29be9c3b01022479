#include "desktop/net/RedirectGuard.h"

#include "kit/Loopback.h"

#include <libsoup/soup.h>

namespace qoro
{

namespace
{

std::string text_of(GUri* uri)
{
    char* text = g_uri_to_string(uri);
    std::string copy = text;
    g_free(text);
    return copy;
}

} // namespace

RedirectGuard::RedirectGuard(SoupMessage* message, GUri* asked, GCancellable* request)
    : message_(static_cast<SoupMessage*>(g_object_ref(message))), asked_(text_of(asked)), request_(request)
{
    g_signal_connect(message_, "restarted", G_CALLBACK(restarted), this);
}

RedirectGuard::~RedirectGuard()
{
    g_signal_handlers_disconnect_by_data(message_, this);
    g_object_unref(message_);
}

void RedirectGuard::restarted(SoupMessage* message, RedirectGuard* guard)
{
    if (!leads_to_this_machine(guard->asked_, text_of(soup_message_get_uri(message))))
        return;
    guard->has_acted_ = true;
    g_cancellable_cancel(guard->request_);
}

} // namespace qoro
