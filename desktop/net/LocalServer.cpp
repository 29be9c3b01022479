#include "desktop/net/LocalServer.h"

#include "desktop/glib/Owned.h"
#include "desktop/net/Loopback.h"

#include <libsoup/soup.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string_view>
#include <utility>

namespace qoro
{

namespace
{

constexpr std::size_t MostStreams = 8;
/// Seconds after which a stream without news is written to, so that a closed one is noticed.
constexpr unsigned Heartbeat = 15;

/// 128 random bits in hexadecimal.
std::string new_token()
{
    constexpr std::string_view Digits = "0123456789abcdef";
    std::random_device random;
    std::string token;
    while (token.size() < 32)
        for (std::uint32_t bits = random(), n = 0; n < 8; ++n, bits >>= 4)
            token += Digits[bits & 15U];
    return token;
}

/// Takes as long for any text of the same length.
bool same(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    unsigned char difference = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        difference |= static_cast<unsigned char>(a[i] ^ b[i]);
    return difference == 0;
}

std::string header(SoupServerMessage* message, const char* name)
{
    const char* value = soup_message_headers_get_list(soup_server_message_get_request_headers(message), name);
    return value ? value : "";
}

std::string token_of(SoupServerMessage* message)
{
    if (std::string given = header(message, "X-Token"); !given.empty())
        return given;
    const char* query = g_uri_get_query(soup_server_message_get_uri(message));
    constexpr std::string_view Key = "token=";
    const std::string_view text = query ? query : "";
    return text.starts_with(Key) ? std::string(text.substr(Key.size())) : std::string();
}

/// The body of a refused request is not kept, and a long one not read to its end.
void drop_body(SoupServerMessage* message)
{
    constexpr gsize MostRead = 1U << 20;
    constexpr const char* Read = "qoro-read";
    soup_message_body_set_accumulate(soup_server_message_get_request_body(message), FALSE);
    g_signal_connect(message, "got-chunk", G_CALLBACK(+[](SoupServerMessage* of, GBytes* chunk, gpointer) {
                         const gsize read =
                             GPOINTER_TO_SIZE(g_object_get_data(G_OBJECT(of), Read)) + g_bytes_get_size(chunk);
                         g_object_set_data(G_OBJECT(of), Read, GSIZE_TO_POINTER(read));
                         if (read > MostRead)
                             g_socket_close(soup_server_message_get_socket(of), nullptr);
                     }),
                     nullptr);
}

/// A plain answer of one line, with which the connection ends.
void refuse(SoupServerMessage* message, guint status, const char* text)
{
    soup_server_message_set_status(message, status, nullptr);
    soup_server_message_set_response(message, "text/plain; charset=utf-8", SOUP_MEMORY_COPY, text,
                                     std::string_view(text).size());
    soup_message_headers_replace(soup_server_message_get_response_headers(message), "Connection", "close");
    drop_body(message);
}

void protect(SoupServerMessage* message, const std::string& policy)
{
    SoupMessageHeaders* headers = soup_server_message_get_response_headers(message);
    const std::string whole = (policy.empty() ? "default-src 'none'" : policy) + "; frame-ancestors 'none'";
    soup_message_headers_replace(headers, "Content-Security-Policy", whole.c_str());
    soup_message_headers_replace(headers, "Cache-Control", "no-store");
    soup_message_headers_replace(headers, "Referrer-Policy", "no-referrer");
    soup_message_headers_replace(headers, "X-Content-Type-Options", "nosniff");
    soup_message_headers_replace(headers, "Cross-Origin-Resource-Policy", "same-origin");
    soup_message_headers_replace(headers, "Cross-Origin-Opener-Policy", "same-origin");
}

void append(SoupServerMessage* stream, const std::string& text)
{
    soup_message_body_append(soup_server_message_get_response_body(stream), SOUP_MEMORY_COPY, text.data(), text.size());
    soup_server_message_unpause(stream);
}

} // namespace

class LocalServer::Impl
{
public:
    Impl(std::vector<Route> routes, std::string news, std::function<std::string()> greeting)
        : routes_(std::move(routes)), news_(std::move(news)), greeting_(std::move(greeting)), token_(new_token()),
          server_(adopt(soup_server_new(nullptr, nullptr)))
    {
        soup_server_add_early_handler(
            server_.get(), nullptr,
            [](SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self) {
                static_cast<Impl*>(self)->check(message, path);
            },
            this, nullptr);
        soup_server_add_handler(
            server_.get(), nullptr,
            [](SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self) {
                static_cast<Impl*>(self)->answer(message, path);
            },
            this, nullptr);
        Listening listening = listen_on_loopback(server_.get());
        host_ = std::move(listening.host);
        error_ = std::move(listening.error);
        if (host_.empty())
            return;
        address_ = "http://" + host_ + "/?token=" + token_;
        heartbeat_.reset(g_timeout_add_seconds(
            Heartbeat,
            [](gpointer self) -> gboolean {
                static_cast<Impl*>(self)->write(": \n\n");
                return G_SOURCE_CONTINUE;
            },
            this));
    }

    ~Impl()
    {
        for (const auto& stream : std::exchange(streams_, {}))
            g_signal_handlers_disconnect_by_data(stream.get(), this);
        soup_server_disconnect(server_.get());
    }
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    const std::string& error() const { return error_; }
    const std::string& address() const { return address_; }

    void tell(const std::string& message) { write("data: " + message + "\n\n"); }

private:
    void write(const std::string& text)
    {
        for (const auto& stream : streams_)
            append(stream.get(), text);
    }

    /// Looks at a request's head. A status that it sets is the answer.
    void check(SoupServerMessage* message, const char* path)
    {
        protect(message, "");
        if (header(message, "Host") != host_)
            return refuse(message, SOUP_STATUS_FORBIDDEN, "The server has another name.\n");
        const std::string origin = header(message, "Origin");
        const std::string site = header(message, "Sec-Fetch-Site");
        if ((!origin.empty() && origin != "http://" + host_) ||
            (!site.empty() && site != "same-origin" && site != "none"))
            return refuse(message, SOUP_STATUS_FORBIDDEN, "Pages of other sites are not answered.\n");
        if (!same(token_of(message), token_))
            return refuse(message, SOUP_STATUS_FORBIDDEN,
                          "The token is missing or wrong: open the address that qoro-ad studio has printed.\n");
        check_target(message, path);
    }

    void check_target(SoupServerMessage* message, std::string_view path)
    {
        const std::string_view method = soup_server_message_get_method(message);
        std::string allowed;
        const auto allow = [&allowed](const std::string& each) { allowed += (allowed.empty() ? "" : ", ") + each; };
        bool found = false;
        for (const Route& route : routes_)
            if (route.path == path) {
                allow(route.method);
                found = found || route.method == method;
            }
        if (path == news_) {
            allow("GET");
            found = method == "GET";
        }
        if (allowed.empty())
            return refuse(message, SOUP_STATUS_NOT_FOUND, "There is nothing at this address.\n");
        if (!found) {
            soup_message_headers_replace(soup_server_message_get_response_headers(message), "Allow", allowed.c_str());
            return refuse(message, SOUP_STATUS_METHOD_NOT_ALLOWED, "Another method is expected here.\n");
        }
        if (path == news_ && streams_.size() >= MostStreams)
            return refuse(message, SOUP_STATUS_SERVICE_UNAVAILABLE, "Too many windows are open.\n");
        SoupMessageHeaders* headers = soup_server_message_get_request_headers(message);
        const SoupEncoding encoding = soup_message_headers_get_encoding(headers);
        if (encoding == SOUP_ENCODING_CHUNKED || encoding == SOUP_ENCODING_UNRECOGNIZED)
            return refuse(message, SOUP_STATUS_LENGTH_REQUIRED, "A body needs a Content-Length.\n");
        if (encoding == SOUP_ENCODING_CONTENT_LENGTH &&
            soup_message_headers_get_content_length(headers) > static_cast<goffset>(MostBody))
            return refuse(message, SOUP_STATUS_REQUEST_ENTITY_TOO_LARGE, "The body is too large.\n");
        // No form of another page can send this.
        if (const char* type = soup_message_headers_get_content_type(headers, nullptr);
            method == SOUP_METHOD_POST && (!type || std::string_view(type) != "application/json"))
            return refuse(message, SOUP_STATUS_UNSUPPORTED_MEDIA_TYPE, "JSON is expected.\n");
    }

    void answer(SoupServerMessage* message, std::string_view path)
    {
        if (path == news_)
            return open_stream(message);
        const std::string_view method = soup_server_message_get_method(message);
        const auto route = std::ranges::find_if(
            routes_, [&](const Route& each) { return each.path == path && each.method == method; });
        if (route == routes_.end())
            return refuse(message, SOUP_STATUS_NOT_FOUND, "There is nothing at this address.\n");
        const SoupMessageBody* given = soup_server_message_get_request_body(message);
        const Answer answer =
            route->answer(given->data ? std::string(given->data, static_cast<std::size_t>(given->length)) : "");
        protect(message, answer.policy);
        if (!answer.file_name.empty())
            soup_message_headers_replace(soup_server_message_get_response_headers(message), "Content-Disposition",
                                         ("attachment; filename=\"" + answer.file_name + "\"").c_str());
        soup_server_message_set_status(message, answer.status, nullptr);
        soup_server_message_set_response(message, answer.type.c_str(), SOUP_MEMORY_COPY, answer.body.data(),
                                         answer.body.size());
    }

    void open_stream(SoupServerMessage* message)
    {
        SoupMessageHeaders* headers = soup_server_message_get_response_headers(message);
        soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
        soup_message_headers_set_content_type(headers, "text/event-stream", nullptr);
        soup_message_headers_set_encoding(headers, SOUP_ENCODING_CHUNKED);
        soup_message_body_set_accumulate(soup_server_message_get_response_body(message), FALSE);
        streams_.push_back(new_ref(message));
        g_signal_connect(message, "finished", G_CALLBACK(+[](SoupServerMessage* closed, Impl* self) {
                             std::erase_if(self->streams_, [closed](const auto& each) { return each.get() == closed; });
                         }),
                         this);
        append(message, "data: " + greeting_() + "\n\n");
    }

    const std::vector<Route> routes_;
    const std::string news_;
    const std::function<std::string()> greeting_;
    const std::string token_;
    std::string error_;
    std::string host_;
    std::string address_;
    ObjectRef<SoupServer> server_;
    std::vector<ObjectRef<SoupServerMessage>> streams_;
    SourceId heartbeat_;
};

LocalServer::LocalServer(std::vector<Route> routes, std::string news, std::function<std::string()> greeting)
    : impl_(std::make_unique<Impl>(std::move(routes), std::move(news), std::move(greeting)))
{
}

LocalServer::~LocalServer() = default;

const std::string& LocalServer::error() const
{
    return impl_->error();
}

const std::string& LocalServer::address() const
{
    return impl_->address();
}

void LocalServer::tell(const std::string& message)
{
    impl_->tell(message);
}

} // namespace qoro
