// An address from an ad, a page or a server. The input is the address.

#include "desktop/media/HttpSource.h"
#include "desktop/net/HttpAddress.h"
#include "desktop/net/ServedFile.h"
#include "kit/NetworkZone.h"
#include "platform/AddressParts.h"
#include "tests/fuzz/FuzzTarget.h"

#include <arpa/inet.h>
#include <gio/gio.h>
#include <gst/gst.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

namespace qoro
{

namespace
{

constexpr std::string_view Public = "public";
constexpr std::string_view Elsewhere = "http://ads.example/";

/// A served folder, and a file outside it.
class Places
{
public:
    Places()
    {
        char folder[] = "/tmp/qoro-fuzz-XXXXXX";
        fuzz::require(mkdtemp(folder) != nullptr, "there is a folder for temporary files");
        whole_ = std::filesystem::canonical(folder);
        std::filesystem::create_directory(whole_ / "served");
        std::filesystem::create_symlink("../secret.txt", whole_ / "served/link");
        std::ofstream(whole_ / "served/clip.mp4") << Public;
        std::ofstream(whole_ / "secret.txt") << "secret";
    }
    ~Places() { std::filesystem::remove_all(whole_); }
    std::string served() const { return whole_ / "served"; }

private:
    std::filesystem::path whole_;
};

/// Whether the C library parses a numeric host as this machine's address.
bool is_number_of_this_machine(const char* host)
{
    in_addr four{};
    if (inet_aton(host, &four) != 0) {
        const unsigned first = ntohl(four.s_addr) >> 24;
        return first == 127 || first == 0;
    }
    in6_addr six{};
    return inet_pton(AF_INET6, host, &six) == 1 && (IN6_IS_ADDR_LOOPBACK(&six) || IN6_IS_ADDR_UNSPECIFIED(&six));
}

void try_request(const std::string& address)
{
    const auto asked = HttpAddress::parse(address);
    if (!asked)
        return;
    const AddressParts parts(address);
    fuzz::require(parts.is_web() && !parts.host().empty(), "an address that can be asked for is one of the web");
    const bool is_here = is_number_of_this_machine(g_uri_get_host(asked->uri()));
    fuzz::require(!is_here || leads_inward(Elsewhere, address), "this machine's number is known as such");
}

/// A part without its escapes; malformed ones are kept.
std::string decoded(std::string_view part)
{
    std::string text;
    for (std::size_t at = 0; at < part.size(); ++at) {
        const bool escape = part[at] == '%' && at + 2 < part.size() && g_ascii_isxdigit(part[at + 1]) != FALSE &&
                            g_ascii_isxdigit(part[at + 2]) != FALSE;
        if (escape)
            text += static_cast<char>(g_ascii_xdigit_value(part[at + 1]) * 16 + g_ascii_xdigit_value(part[at + 2]));
        else
            text += part[at];
        at += escape ? 2 : 0;
    }
    return text;
}

/// @param of_glib null for an absent part
bool same(const std::optional<std::string_view>& part, const char* of_glib)
{
    return part.has_value() == (of_glib != nullptr) && (!part || decoded(*part) == decoded(of_glib));
}

/// GLib removes the brackets of an IP literal and decodes its zone.
bool same_host(std::string_view host, const char* of_glib)
{
    return host.starts_with('[') ? decoded(host) == "[" + std::string(of_glib) + "]" : same(host, of_glib);
}

struct GlibParts {
    explicit GlibParts(const std::string& address)
        : accepted(g_uri_split(address.c_str(), static_cast<GUriFlags>(G_URI_FLAGS_ENCODED | G_URI_FLAGS_NON_DNS),
                               &scheme, &user, &host, &port, &path, &query, &fragment, nullptr) != FALSE)
    {
    }
    ~GlibParts()
    {
        for (char* part : {scheme, user, host, path, query, fragment})
            g_free(part);
    }
    GlibParts(const GlibParts&) = delete;
    GlibParts& operator=(const GlibParts&) = delete;

    char* scheme = nullptr;
    char* user = nullptr;
    char* host = nullptr;
    int port = -1;
    char* path = nullptr;
    char* query = nullptr;
    char* fragment = nullptr;
    const bool accepted;
};

/// What GLib accepts has the same parts here, escapes aside: GLib adds some and removes others.
void try_parts(const std::string& address)
{
    const AddressParts parts(address);
    fuzz::require(parts.text() == address, "the parts are those of the whole address");
    if (address.find('\0') != std::string::npos)
        return;
    const GlibParts glib(address);
    // GLib tolerates "@" and "]" in a host, where RFC 3986 does not.
    if (!glib.accepted || (glib.host && std::strpbrk(glib.host, "@]")))
        return;
    fuzz::require(parts.scheme() == (glib.scheme ? glib.scheme : ""), "GLib reads the same scheme");
    fuzz::require(parts.authority().has_value() == (glib.host != nullptr), "GLib reads an authority, too");
    if (glib.host) {
        fuzz::require(same(parts.authority()->user, glib.user), "GLib reads the same user");
        fuzz::require(same_host(parts.host(), glib.host), "GLib reads the same host");
        fuzz::require(parts.port() ? *parts.port() == glib.port : glib.port == -1, "GLib reads the same port");
    }
    fuzz::require(same(parts.path(), glib.path), "GLib reads the same path");
    fuzz::require(same(parts.query(), glib.query), "GLib reads the same query");
    fuzz::require(same(parts.fragment(), glib.fragment), "GLib reads the same fragment");
}

void try_video(const std::string& address)
{
    GstElement* source = GST_ELEMENT(gst_object_ref_sink(make_http_source(address, {})));
    GstPad* exit = gst_element_get_static_pad(source, "src");
    GstQuery* query = gst_query_new_uri();
    fuzz::require(gst_pad_query(exit, query), "a source answers what its address is");
    gchar* answer = nullptr;
    gst_query_parse_uri(query, &answer);
    fuzz::require(answer && g_str_has_prefix(answer, "video:stream"), "its answer reveals no address");
    // As GStreamer does to detect the video's type.
    GstUri* parsed = gst_uri_from_string(answer);
    fuzz::require(parsed != nullptr, "its answer can be read");
    gchar* path = gst_uri_get_path(parsed);
    g_free(path);
    gst_uri_unref(parsed);
    g_free(answer);
    gst_query_unref(query);
    gst_object_unref(exit);
    gst_object_unref(source);
}

void try_served_file(std::string_view path)
{
    static const Places places;
    const auto file = ServedFile::open(places.served(), path);
    if (!file)
        return;
    char content[Public.size()];
    fuzz::require(file->size() == static_cast<std::int64_t>(Public.size()) &&
                      file->read(0, content, sizeof content) == sizeof content &&
                      std::memcmp(content, Public.data(), sizeof content) == 0,
                  "only what lies in the folder is served");
}

} // namespace

void fuzz::run_input(std::string_view input)
{
    static const bool ready = gst_init_check(nullptr, nullptr, nullptr);
    require(ready, "GStreamer can be loaded");
    const std::string address(input);
    try_request(address);
    try_video(address);
    try_served_file(input.substr(0, input.find('?')));
    try_parts(address);
    // In both directions, and from itself.
    require(!leads_inward("http://127.0.0.1/", address), "this machine may lead to itself");
    leads_inward(address, Elsewhere);
    if (zone_named_by(address) > NetworkZone::Public)
        require(leads_inward(Elsewhere, address), "nothing from elsewhere leads inside");
}

} // namespace qoro
