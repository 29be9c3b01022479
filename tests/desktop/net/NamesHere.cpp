#include "tests/desktop/net/NamesHere.h"

#include <gio/gio.h>

#include <map>

namespace qoro::test
{

namespace
{

struct Resolver {
    GResolver parent;
};
struct ResolverClass {
    GResolverClass parent;
};

/// IPv4 addresses by name (NamesHere::lead). Not locked: changed only while no lookup runs.
std::map<std::string, std::vector<std::string>> elsewhere;

GList* address_of(const char* name, GResolverNameLookupFlags flags, GError** error)
{
    if (const auto led = elsewhere.find(name);
        led != elsewhere.end() && !(flags & G_RESOLVER_NAME_LOOKUP_FLAGS_IPV6_ONLY)) {
        GList* addresses = nullptr;
        for (const std::string& ip : led->second)
            addresses = g_list_append(addresses, g_inet_address_new_from_string(ip.c_str()));
        return addresses;
    }
    if (g_str_has_suffix(name, ".example") && !(flags & G_RESOLVER_NAME_LOOKUP_FLAGS_IPV6_ONLY))
        return g_list_append(nullptr, g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4));
    g_set_error(error, G_RESOLVER_ERROR, G_RESOLVER_ERROR_NOT_FOUND, "no name of a test: %s", name);
    return nullptr;
}

GList* look_up(GResolver*, const char* name, GCancellable*, GError** error)
{
    return address_of(name, G_RESOLVER_NAME_LOOKUP_FLAGS_DEFAULT, error);
}

GList* look_up_flags(GResolver*, const char* name, GResolverNameLookupFlags flags, GCancellable*, GError** error)
{
    return address_of(name, flags, error);
}

void look_up_flags_async(GResolver* resolver, const char* name, GResolverNameLookupFlags flags, GCancellable* stop,
                         GAsyncReadyCallback done, gpointer data)
{
    GTask* task = g_task_new(resolver, stop, done, data);
    GError* error = nullptr;
    GList* found = address_of(name, flags, &error);
    if (error)
        g_task_return_error(task, error);
    else
        g_task_return_pointer(task, found, [](gpointer list) { g_resolver_free_addresses(static_cast<GList*>(list)); });
    g_object_unref(task);
}

void look_up_async(GResolver* resolver, const char* name, GCancellable* stop, GAsyncReadyCallback done, gpointer data)
{
    look_up_flags_async(resolver, name, G_RESOLVER_NAME_LOOKUP_FLAGS_DEFAULT, stop, done, data);
}

GList* finish(GResolver*, GAsyncResult* result, GError** error)
{
    return static_cast<GList*>(g_task_propagate_pointer(G_TASK(result), error));
}

G_DEFINE_TYPE(Resolver, resolver, G_TYPE_RESOLVER)

void resolver_init(Resolver*)
{
}

void resolver_class_init(ResolverClass* type)
{
    type->parent.lookup_by_name = look_up;
    type->parent.lookup_by_name_async = look_up_async;
    type->parent.lookup_by_name_finish = finish;
    type->parent.lookup_by_name_with_flags = look_up_flags;
    type->parent.lookup_by_name_with_flags_async = look_up_flags_async;
    type->parent.lookup_by_name_with_flags_finish = finish;
}

} // namespace

NamesHere::NamesHere() : before_(g_resolver_get_default())
{
    auto* ours = static_cast<GResolver*>(g_object_new(resolver_get_type(), nullptr));
    g_resolver_set_default(ours);
    g_object_unref(ours);
}

void NamesHere::lead(const std::string& name, const std::vector<std::string>& addresses)
{
    elsewhere[name] = addresses;
}

NamesHere::~NamesHere()
{
    elsewhere.clear();
    g_resolver_set_default(before_);
    g_object_unref(before_);
}

} // namespace qoro::test
