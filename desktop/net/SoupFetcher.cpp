#include "desktop/net/SoupFetcher.h"

#include "desktop/net/ContextThread.h"

#include <libsoup/soup.h>

#include <chrono>
#include <future>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace qoro
{

namespace
{
constexpr const char* UserAgent = "QoroVideoAd/0.1";
constexpr std::size_t PieceSize = 64u << 10;
/// Trackers of one moment go to one host together, and none is to wait for another.
constexpr int ConnectionsPerHost = 64;
constexpr int Connections = 256;

FetchAnswer failure(std::string error)
{
    FetchAnswer answer;
    answer.error = std::move(error);
    return answer;
}

/// Null when the text is no address of HTTP. The caller frees it.
GUri* http_uri(const std::string& address)
{
    GUri* uri = g_uri_parse(address.c_str(), static_cast<GUriFlags>(SOUP_HTTP_URI_FLAGS), nullptr);
    if (!uri)
        return nullptr;
    const std::string_view scheme = g_uri_get_scheme(uri);
    const char* host = g_uri_get_host(uri);
    if ((scheme == "http" || scheme == "https") && host && *host)
        return uri;
    g_uri_unref(uri);
    return nullptr;
}

std::string uri_text(GUri* uri)
{
    char* text = g_uri_to_string(uri);
    std::string copy = text;
    g_free(text);
    return copy;
}
} // namespace

struct SoupFetcher::Waiting {
    std::uint64_t next_number = 1;
    std::unordered_map<std::uint64_t, std::function<void(FetchAnswer)>> answers;
};

/// The thread with the session. Everything but start() and the destructor runs on it.
class SoupFetcher::Worker
{
public:
    using Done = std::function<void(FetchAnswer)>;

    explicit Worker(std::size_t body_limit) : body_limit_(body_limit), thread_("qoro fetch")
    {
        thread_.run([this] {
            session_ = soup_session_new_with_options("user-agent", UserAgent, "max-conns", Connections,
                                                     "max-conns-per-host", ConnectionsPerHost, nullptr);
        });
    }

    ~Worker()
    {
        thread_.run([this] {
            for (Transfer* transfer : transfers_)
                g_cancellable_cancel(transfer->cancellable);
        });
        thread_.run_while([this] { return !transfers_.empty(); });
        thread_.run([this] {
            soup_session_abort(session_);
            g_object_unref(session_);
        });
    }

    /// @param done called on the worker's thread
    void start(std::string address, double seconds, Done done)
    {
        thread_.post(
            [this, address = std::move(address), seconds, done = std::move(done)] { begin(address, seconds, done); });
    }

private:
    struct Transfer {
        Worker& worker;
        std::string address;
        Done done;
        GUri* asked;
        SoupMessage* message;
        GCancellable* cancellable;
        GSource* time_out;
        double seconds;
        bool timed_out = false;
        GInputStream* stream = nullptr;
        std::string body = {};
    };

    void begin(const std::string& address, double seconds, const Done& done)
    {
        GUri* uri = http_uri(address);
        if (!uri) {
            done(failure("not an http address"));
            return;
        }
        SoupMessage* message = soup_message_new_from_uri(SOUP_METHOD_GET, uri);
        auto* transfer = new Transfer{.worker = *this,
                                      .address = address,
                                      .done = done,
                                      .asked = uri,
                                      .message = message,
                                      .cancellable = g_cancellable_new(),
                                      .time_out = g_timeout_source_new(static_cast<guint>(seconds * 1000)),
                                      .seconds = seconds};
        g_source_set_callback(
            transfer->time_out,
            [](gpointer data) -> gboolean {
                auto* late = static_cast<Transfer*>(data);
                late->timed_out = true;
                g_cancellable_cancel(late->cancellable);
                return G_SOURCE_REMOVE;
            },
            transfer, nullptr);
        g_source_attach(transfer->time_out, thread_.context());
        transfers_.insert(transfer);
        soup_session_send_async(session_, message, G_PRIORITY_DEFAULT, transfer->cancellable, answered, transfer);
    }

    static void answered(GObject*, GAsyncResult* result, gpointer data)
    {
        auto* transfer = static_cast<Transfer*>(data);
        GError* error = nullptr;
        transfer->stream = soup_session_send_finish(transfer->worker.session_, result, &error);
        if (transfer->stream)
            read_on(transfer);
        else
            end_with(transfer, error);
    }

    static void read_on(Transfer* transfer)
    {
        g_input_stream_read_bytes_async(transfer->stream, PieceSize, G_PRIORITY_DEFAULT, transfer->cancellable,
                                        was_read, transfer);
    }

    static void was_read(GObject* stream, GAsyncResult* result, gpointer data)
    {
        auto* transfer = static_cast<Transfer*>(data);
        GError* error = nullptr;
        GBytes* piece = g_input_stream_read_bytes_finish(G_INPUT_STREAM(stream), result, &error);
        if (!piece) {
            end_with(transfer, error);
            return;
        }
        gsize length = 0;
        const void* bytes = g_bytes_get_data(piece, &length);
        transfer->body.append(static_cast<const char*>(bytes), length);
        g_bytes_unref(piece);
        const std::size_t limit = transfer->worker.body_limit_;
        if (transfer->body.size() > limit)
            end(transfer, failure("the answer is larger than " + std::to_string(limit) + " bytes"));
        else if (length == 0)
            end_with_body(transfer);
        else
            read_on(transfer);
    }

    static void end_with(Transfer* transfer, GError* error)
    {
        std::string words = error->message;
        g_error_free(error);
        if (transfer->timed_out)
            words = "no complete answer within " + std::to_string(static_cast<int>(transfer->seconds)) + " seconds";
        end(transfer, failure(std::move(words)));
    }

    static void end_with_body(Transfer* transfer)
    {
        const guint status = soup_message_get_status(transfer->message);
        if (status >= 400) {
            end(transfer, failure("HTTP status " + std::to_string(status)));
            return;
        }
        FetchAnswer answer;
        answer.ok = true;
        answer.body = std::move(transfer->body);
        // Without a redirect the address stays letter for letter what was asked for.
        GUri* final = soup_message_get_uri(transfer->message);
        answer.final_address = soup_uri_equal(transfer->asked, final) ? transfer->address : uri_text(final);
        end(transfer, std::move(answer));
    }

    static void end(Transfer* transfer, FetchAnswer answer)
    {
        transfer->worker.transfers_.erase(transfer);
        g_source_destroy(transfer->time_out);
        g_source_unref(transfer->time_out);
        g_cancellable_cancel(transfer->cancellable); // a body that is not wanted whole
        g_clear_object(&transfer->stream);
        g_object_unref(transfer->message);
        g_uri_unref(transfer->asked);
        g_object_unref(transfer->cancellable);
        const Done done = std::move(transfer->done);
        delete transfer;
        done(std::move(answer));
    }

    const std::size_t body_limit_;
    SoupSession* session_ = nullptr;
    std::set<Transfer*> transfers_;
    ContextThread thread_; // last: it ends before what it uses
};

SoupFetcher::SoupFetcher(MainLoop& loop) : SoupFetcher(loop, Limits{})
{
}

SoupFetcher::SoupFetcher(MainLoop& loop, const Limits& limits)
    : loop_(loop), limits_(limits), waiting_(std::make_shared<Waiting>()),
      worker_(std::make_unique<Worker>(limits.body))
{
}

SoupFetcher::~SoupFetcher()
{
    worker_.reset();
}

void SoupFetcher::fetch(const std::string& address, std::function<void(FetchAnswer)> answer)
{
    const std::uint64_t number = waiting_->next_number++;
    waiting_->answers.emplace(number, std::move(answer));
    worker_->start(address, limits_.background_seconds,
                   [&loop = loop_, waiting = std::weak_ptr(waiting_), number](FetchAnswer arrived) {
                       loop.post([waiting, number, arrived = std::move(arrived)]() mutable {
                           const auto still = waiting.lock();
                           if (!still)
                               return;
                           if (auto entry = still->answers.extract(number))
                               entry.mapped()(std::move(arrived));
                       });
                   });
}

FetchAnswer SoupFetcher::fetch_now(const std::string& address)
{
    // Shared with the worker, so that whoever leaves last lets it go.
    const auto promise = std::make_shared<std::promise<FetchAnswer>>();
    std::future<FetchAnswer> answer = promise->get_future();
    worker_->start(address, limits_.waiting_seconds,
                   [promise](FetchAnswer arrived) { promise->set_value(std::move(arrived)); });
    // The worker keeps the time; the second more is for a worker that is stuck itself.
    if (answer.wait_for(std::chrono::duration<double>(limits_.waiting_seconds + 1)) != std::future_status::ready)
        return failure("the fetch did not end in time");
    return answer.get();
}

void SoupFetcher::abandon()
{
    // Whoever goes with his answer may come back here.
    const auto gone = std::exchange(waiting_->answers, {});
}

std::size_t SoupFetcher::pending() const
{
    return waiting_->answers.size();
}

} // namespace qoro
