#include "desktop/net/AdServer.h"

#include "desktop/glib/Owned.h"
#include "desktop/net/ContentType.h"
#include "desktop/net/ContextThread.h"
#include "desktop/net/Loopback.h"
#include "desktop/net/ServedFile.h"

#include <libsoup/soup.h>

#include <algorithm>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>

namespace qoro
{

namespace
{
constexpr std::size_t PieceSize = 64u << 10;

/// The part of a file that is being sent, in pieces, so that a large video is never in memory as a whole.
struct Sending {
    ServedFile file;
    std::int64_t next;
    std::int64_t end;
};

struct Span {
    std::int64_t first;
    std::int64_t last;
};

/// The range that a request asks for. Requests for several ranges, or in an unknown form, get the whole file (RFC 9110,
/// 14.2).
/// @return absent for the whole file; first > last if the range lies outside the file
std::optional<Span> asked_range(SoupMessageHeaders* headers, std::int64_t size)
{
    if (!soup_message_headers_get_one(headers, "Range"))
        return std::nullopt;
    SoupRange* ranges = nullptr;
    int count = 0;
    if (!soup_message_headers_get_ranges(headers, size, &ranges, &count))
        return std::nullopt;
    std::optional<Span> span;
    if (count == 1)
        span = Span{ranges[0].start, std::min<std::int64_t>(ranges[0].end, size - 1)};
    soup_message_headers_free_ranges(headers, ranges);
    return span;
}

void send_piece(SoupServerMessage* message, Sending& sending)
{
    const auto length = static_cast<std::size_t>(std::min<std::int64_t>(sending.end - sending.next, PieceSize));
    if (length == 0)
        return;
    Owned<char, g_free> piece(static_cast<char*>(g_malloc(length)));
    if (sending.file.read(sending.next, piece.get(), length) < length) {
        // The file has shrunk since its size was sent: a broken connection is the only way to report that.
        g_socket_close(soup_server_message_get_socket(message), nullptr);
        return;
    }
    sending.next += static_cast<std::int64_t>(length);
    soup_message_body_append_take(soup_server_message_get_response_body(message),
                                  reinterpret_cast<unsigned char*>(piece.release()), length);
}

void answer_with(SoupServerMessage* message, guint status)
{
    soup_server_message_set_status(message, status, nullptr);
}

void answer_with_file(SoupServerMessage* message, ServedFile file, std::string_view path)
{
    SoupMessageHeaders* headers = soup_server_message_get_response_headers(message);
    const std::int64_t size = file.size();
    soup_message_headers_set_content_type(headers, content_type_of(path), nullptr);
    soup_message_headers_replace(headers, "Accept-Ranges", "bytes");

    Span span{0, size - 1};
    if (const auto range = asked_range(soup_server_message_get_request_headers(message), size)) {
        span = *range;
        if (span.first > span.last) {
            soup_message_headers_replace(headers, "Content-Range", ("bytes */" + std::to_string(size)).c_str());
            answer_with(message, SOUP_STATUS_REQUESTED_RANGE_NOT_SATISFIABLE);
            return;
        }
        soup_message_headers_set_content_range(headers, span.first, span.last, size);
        answer_with(message, SOUP_STATUS_PARTIAL_CONTENT);
    } else {
        answer_with(message, SOUP_STATUS_OK);
    }
    soup_message_headers_set_content_length(headers, span.last - span.first + 1);
    if (soup_server_message_get_method(message) == SOUP_METHOD_HEAD)
        return;

    soup_message_body_set_accumulate(soup_server_message_get_response_body(message), FALSE);
    auto* sending = new Sending{std::move(file), span.first, span.last + 1};
    g_signal_connect_data(
        message, "wrote-chunk",
        G_CALLBACK(+[](SoupServerMessage* of, gpointer data) { send_piece(of, *static_cast<Sending*>(data)); }),
        sending, [](gpointer data, GClosure*) { delete static_cast<Sending*>(data); }, G_CONNECT_DEFAULT);
    send_piece(message, *sending);
}

void answer_with_script(SoupServerMessage* message, const std::string& script)
{
    answer_with(message, SOUP_STATUS_OK);
    soup_server_message_set_response(message, content_type_of("script.js"), SOUP_MEMORY_COPY, script.data(),
                                     script.size());
}

bool stands_for(const std::string& tracker, const std::string& path)
{
    const std::size_t macro = tracker.find('{');
    return macro == std::string::npos ? path == tracker : path.starts_with(tracker.substr(0, macro));
}
} // namespace

class AdServer::Worker
{
public:
    Worker(AdServerContent content, OnHit on_hit)
        : content_(std::move(content)), on_hit_(std::move(on_hit)), thread_("qoro ad server")
    {
        std::error_code failed;
        if (!content_.folder.empty())
            content_.folder = std::filesystem::canonical(content_.folder, failed).string();
        if (failed) {
            error_ = failed.message();
            return;
        }
        thread_.run([this] { listen(); });
    }

    ~Worker()
    {
        thread_.run([this] {
            if (!server_)
                return;
            soup_server_disconnect(server_.get());
            server_.reset();
        });
    }

    const std::string& error() const { return error_; }
    const std::string& host() const { return host_; }

    void set_trackers(std::vector<std::string> paths)
    {
        thread_.run([&] { trackers_ = std::move(paths); });
    }

    std::vector<AdServerHit> hits() const
    {
        std::scoped_lock lock(mutex_);
        return hits_;
    }

private:
    void listen()
    {
        // raw-paths: a tracker's address is recorded as it was sent.
        server_ = adopt(soup_server_new("raw-paths", TRUE, nullptr));
        soup_server_add_handler(
            server_.get(), nullptr,
            [](SoupServer*, SoupServerMessage* message, const char*, GHashTable*, gpointer self) {
                static_cast<Worker*>(self)->handle(message);
            },
            this, nullptr);
        Listening listening = listen_on_loopback(server_.get());
        host_ = std::move(listening.host);
        error_ = std::move(listening.error);
    }

    void handle(SoupServerMessage* message)
    {
        GUri* uri = soup_server_message_get_uri(message);
        const std::string path = g_uri_get_path(uri);
        AdServerHit hit;
        hit.time = g_get_monotonic_time();
        hit.method = soup_server_message_get_method(message);
        hit.target = path;
        if (const char* query = g_uri_get_query(uri))
            hit.target.append("?").append(query);
        answer(message, path, hit);
        hit.status = soup_server_message_get_status(message);
        {
            std::scoped_lock lock(mutex_);
            hits_.push_back(hit);
        }
        if (on_hit_)
            on_hit_(hit);
    }

    void answer(SoupServerMessage* message, const std::string& path, AdServerHit& hit)
    {
        // Prevents DNS rebinding: a request for another host name comes from a foreign page that tries to read the
        // folder.
        const char* host = soup_message_headers_get_one(soup_server_message_get_request_headers(message), "Host");
        if (!host || host != host_) {
            answer_with(message, SOUP_STATUS_FORBIDDEN);
            return;
        }
        hit.tracker =
            std::ranges::any_of(trackers_, [&path](const std::string& tracker) { return stands_for(tracker, path); });
        const bool reads = hit.method == SOUP_METHOD_GET || hit.method == SOUP_METHOD_HEAD;
        if (hit.tracker) {
            // libsoup closes the connection after an answer without a length; the header keeps clients from reusing it.
            soup_message_headers_replace(soup_server_message_get_response_headers(message), "Connection", "close");
            answer_with(message, SOUP_STATUS_NO_CONTENT);
            return;
        }
        if (!reads) {
            soup_message_headers_replace(soup_server_message_get_response_headers(message), "Allow", "GET, HEAD");
            answer_with(message, SOUP_STATUS_METHOD_NOT_ALLOWED);
            return;
        }
        if (auto file = open_file(path))
            answer_with_file(message, std::move(*file), path);
        else if (path == ScriptPath || path.ends_with("/mraid.js"))
            answer_with_script(message, content_.script);
        else
            answer_with(message, SOUP_STATUS_NOT_FOUND);
    }

    std::optional<ServedFile> open_file(const std::string& path) const
    {
        if (content_.folder.empty())
            return std::nullopt;
        return ServedFile::open(content_.folder, path);
    }

    AdServerContent content_;
    std::vector<std::string> trackers_; // only touched on the thread
    const OnHit on_hit_;
    std::string error_;
    std::string host_;
    ObjectRef<SoupServer> server_;
    mutable std::mutex mutex_;
    std::vector<AdServerHit> hits_; // guarded by mutex_
    ContextThread thread_;          // last, so that it ends before the members it uses
};

AdServer::AdServer(AdServerContent content, OnHit on_hit)
    : worker_(std::make_unique<Worker>(std::move(content), std::move(on_hit)))
{
}

AdServer::~AdServer() = default;

bool AdServer::listens() const
{
    return !worker_->host().empty();
}

const std::string& AdServer::error() const
{
    return worker_->error();
}

std::string AdServer::base() const
{
    return listens() ? "http://" + worker_->host() : "";
}

void AdServer::set_trackers(std::vector<std::string> paths)
{
    worker_->set_trackers(std::move(paths));
}

std::vector<AdServerHit> AdServer::hits() const
{
    return worker_->hits();
}

} // namespace qoro
