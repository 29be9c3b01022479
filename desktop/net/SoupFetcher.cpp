#include "desktop/net/SoupFetcher.h"

#include "desktop/glib/Owned.h"
#include "desktop/net/ContextThread.h"
#include "desktop/net/HttpAddress.h"
#include "desktop/net/Reach.h"
#include "desktop/net/RequestGuard.h"
#include "desktop/net/UserAgent.h"

#include <libsoup/soup.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <future>
#include <map>
#include <set>
#include <unordered_map>
#include <utility>

namespace qoro
{

namespace
{
constexpr std::size_t PieceSize = 64u << 10;

FetchAnswer failure(std::string error)
{
    FetchAnswer answer;
    answer.error = std::move(error);
    return answer;
}

} // namespace

struct SoupFetcher::Waiting {
    std::uint64_t next_number = 1;
    std::unordered_map<std::uint64_t, std::function<void(FetchAnswer)>> answers;
};

/// Owns the thread with the session. All functions except start(), finish() and the destructor run on that thread.
///
/// Fetches are queued here and not in libsoup, which walks through its whole queue whenever a request ends.
class SoupFetcher::Worker
{
public:
    using Done = std::function<void(FetchAnswer)>;

    explicit Worker(const Limits& limits) : limits_(limits), thread_("qoro fetch")
    {
        thread_.run([this] {
            // One more than our own limits, which do not count the fetch that blocks the main thread.
            session_ = adopt(soup_session_new_with_options("user-agent", UserAgent, "max-conns", limits_.in_all + 1,
                                                           "max-conns-per-host", limits_.per_host + 1, "idle-timeout",
                                                           limits_.idle_seconds, nullptr));
            soup_session_add_feature_by_type(session_.get(), SOUP_TYPE_COOKIE_JAR);
        });
    }

    ~Worker()
    {
        thread_.run([this] {
            ends_ = true;
            waiting_.clear();
            while (!pausing_.empty())
                forget(*pausing_.begin());
            for (Transfer* transfer : transfers_)
                g_cancellable_cancel(transfer->cancellable.get());
        });
        thread_.run_while([this] { return !transfers_.empty(); });
        thread_.run([this] {
            soup_session_abort(session_.get());
            session_.reset();
        });
    }

    /// @param urgent whether the fetch blocks the main thread
    /// @param done called on the worker's thread
    void start(std::string address, FetchKind kind, bool urgent, Done done)
    {
        thread_.post([this, address = std::move(address), kind, urgent, done = std::move(done)] {
            if (auto parsed = HttpAddress::parse(address))
                begin({std::move(*parsed), kind, urgent, done});
            else
                done(failure("not an http address"));
        });
    }

    void finish(double seconds)
    {
        bool expired = false;
        const OwnedSource deadline(g_timeout_source_new(static_cast<guint>(seconds * 1000)));
        g_source_set_callback(
            deadline.get(),
            [](gpointer over) -> gboolean {
                *static_cast<bool*>(over) = true;
                return G_SOURCE_REMOVE;
            },
            &expired, nullptr);
        g_source_attach(deadline.get(), thread_.context());
        thread_.run_while([this, &expired] { return !expired && !transfers_.empty(); });
    }

private:
    struct Asked {
        HttpAddress address;
        FetchKind kind;
        /// Whether the fetch blocks the main thread.
        bool urgent;
        Done done;
        bool again = false;
    };
    /// A page that is requested again after a pause.
    struct Pausing {
        Worker& worker;
        Asked asked;
        OwnedSource pause;
    };
    struct Transfer {
        Worker& worker;
        HttpAddress address;
        Done done;
        /// Origin whose limit the fetch counts towards; empty for an urgent one.
        std::string origin;
        ObjectRef<SoupMessage> message;
        ObjectRef<GCancellable> cancellable;
        OwnedSource time_out;
        double seconds;
        FetchKind kind;
        bool may_try_again;
        RequestGuard guard{message.get(), address, cancellable.get(), reach_of(address)};
        bool timed_out = false;
        bool hung_up_on = false;
        ObjectRef<GInputStream> stream = {};
        std::string body = {};
        Connections connections = {};
    };

    void begin(const Asked& asked)
    {
        const std::string origin = asked.urgent ? "" : asked.address.origin();
        if (asked.urgent || (active_ < limits_.in_all && may_have_more(origin)))
            send(asked, origin);
        else
            waiting_[origin].push_back(asked);
    }

    void begin_again_later(Asked asked)
    {
        asked.again = true;
        auto* pausing = new Pausing{*this, std::move(asked),
                                    OwnedSource(g_timeout_source_new(static_cast<guint>(limits_.page_pause * 1000)))};
        g_source_set_callback(
            pausing->pause.get(),
            [](gpointer data) -> gboolean {
                auto* over = static_cast<Pausing*>(data);
                over->worker.begin(over->asked);
                over->worker.forget(over);
                return G_SOURCE_REMOVE;
            },
            pausing, nullptr);
        g_source_attach(pausing->pause.get(), thread_.context());
        pausing_.insert(pausing);
    }

    void forget(Pausing* pausing)
    {
        pausing_.erase(pausing);
        delete pausing;
    }

    /// @param origin whose limit the fetch counts towards; empty for an urgent one
    void send(const Asked& asked, const std::string& origin)
    {
        if (!origin.empty()) {
            ++active_;
            ++active_by_origin_[origin];
        }
        const double seconds = origin.empty() ? limits_.waiting_seconds : limits_.background_seconds;
        auto* transfer = new Transfer{.worker = *this,
                                      .address = asked.address,
                                      .done = asked.done,
                                      .origin = origin,
                                      .message = adopt(soup_message_new_from_uri(SOUP_METHOD_GET, asked.address.uri())),
                                      .cancellable = adopt(g_cancellable_new()),
                                      .time_out = OwnedSource(g_timeout_source_new(static_cast<guint>(seconds * 1000))),
                                      .seconds = seconds,
                                      .kind = asked.kind,
                                      .may_try_again = asked.kind == FetchKind::Page && !asked.urgent && !asked.again};
        g_source_set_callback(
            transfer->time_out.get(),
            [](gpointer data) -> gboolean {
                auto* late = static_cast<Transfer*>(data);
                late->timed_out = true;
                g_cancellable_cancel(late->cancellable.get());
                return G_SOURCE_REMOVE;
            },
            transfer, nullptr);
        g_source_attach(transfer->time_out.get(), thread_.context());
        SoupMessage* message = transfer->message.get();
        transfer->connections.add(message, "restarted", restarted, transfer);
        transfers_.insert(transfer);
        soup_session_send_async(session_.get(), message, G_PRIORITY_DEFAULT, transfer->cancellable.get(), answered,
                                transfer);
    }

    bool may_have_more(const std::string& origin) const
    {
        const auto count = active_by_origin_.find(origin);
        return count == active_by_origin_.end() || count->second < limits_.per_host;
    }

    /// Sends a queued fetch in place of one that has ended: of the same origin, otherwise of any origin below its
    /// limit.
    void send_next(const std::string& origin)
    {
        auto next = waiting_.find(origin);
        if (next == waiting_.end())
            next = std::ranges::find_if(waiting_, [this](const auto& each) { return may_have_more(each.first); });
        if (next == waiting_.end())
            return;
        const std::string its_origin = next->first;
        const Asked asked = std::move(next->second.front());
        next->second.pop_front();
        if (next->second.empty())
            waiting_.erase(next);
        send(asked, its_origin);
    }

    void leave(const std::string& origin)
    {
        if (origin.empty())
            return;
        --active_;
        if (const auto count = active_by_origin_.find(origin); --count->second == 0)
            active_by_origin_.erase(count);
        send_next(origin);
    }

    /// Emitted after the answer to a redirect. Without an answer, libsoup is about to repeat the request.
    static void restarted(SoupMessage* message, gpointer data)
    {
        if (soup_message_get_status(message) != SOUP_STATUS_NONE)
            return;
        auto* transfer = static_cast<Transfer*>(data);
        transfer->hung_up_on = true;
        g_cancellable_cancel(transfer->cancellable.get());
    }

    static void answered(GObject*, GAsyncResult* result, gpointer data)
    {
        auto* transfer = static_cast<Transfer*>(data);
        Error error;
        transfer->stream = adopt(soup_session_send_finish(transfer->worker.session_.get(), result, error.out()));
        if (transfer->stream)
            read_on(transfer);
        else
            end_with(transfer, *error.get());
    }

    static void read_on(Transfer* transfer)
    {
        g_input_stream_read_bytes_async(transfer->stream.get(), PieceSize, G_PRIORITY_DEFAULT,
                                        transfer->cancellable.get(), was_read, transfer);
    }

    static void was_read(GObject* stream, GAsyncResult* result, gpointer data)
    {
        auto* transfer = static_cast<Transfer*>(data);
        Error error;
        const Owned<GBytes, g_bytes_unref> piece(
            g_input_stream_read_bytes_finish(G_INPUT_STREAM(stream), result, error.out()));
        if (!piece) {
            end_with(transfer, *error.get());
            return;
        }
        gsize length = 0;
        const void* bytes = g_bytes_get_data(piece.get(), &length);
        transfer->body.append(static_cast<const char*>(bytes), length);
        const std::size_t limit = transfer->worker.limits_.body;
        if (transfer->body.size() > limit)
            end(transfer, failure("the answer is larger than " + std::to_string(limit) + " bytes"));
        else if (length == 0)
            end_with_body(transfer);
        else
            read_on(transfer);
    }

    static void end_with(Transfer* transfer, const GError& error)
    {
        std::string words = error.message;
        bool server_failed = error.domain == G_IO_ERROR;
        if (transfer->timed_out)
            words = "no complete answer within " + std::to_string(static_cast<int>(transfer->seconds)) + " seconds";
        else if (transfer->hung_up_on)
            words = "the server hung up without an answer";
        else if (transfer->guard.reason()) {
            words = transfer->guard.reason();
            server_failed = false;
        }
        if (server_failed)
            end_or_try_again(transfer, failure(std::move(words)));
        else
            end(transfer, failure(std::move(words)));
    }

    static void end_with_body(Transfer* transfer)
    {
        const guint status = soup_message_get_status(transfer->message.get());
        if (status >= 500)
            return end_or_try_again(transfer, failure("HTTP status " + std::to_string(status)));
        if (status >= 400)
            return end(transfer, failure("HTTP status " + std::to_string(status)));
        FetchAnswer answer;
        answer.ok = true;
        answer.body = std::move(transfer->body);
        // Without a redirect the address is returned exactly as requested.
        GUri* final = soup_message_get_uri(transfer->message.get());
        const HttpAddress from =
            soup_uri_equal(transfer->address.uri(), final) ? transfer->address : HttpAddress(final);
        answer.final_address = from.written();
        if (transfer->kind == FetchKind::Page)
            note_page(from, transfer->guard.zone());
        end(transfer, std::move(answer));
    }

    /// The server has failed, perhaps only temporarily.
    static void end_or_try_again(Transfer* transfer, FetchAnswer answer)
    {
        Worker& worker = transfer->worker;
        if (transfer->may_try_again && !worker.ends_) {
            const Asked again{transfer->address, transfer->kind, false, std::move(transfer->done)};
            transfer->done = [&worker, again](const FetchAnswer&) { worker.begin_again_later(again); };
        }
        end(transfer, std::move(answer));
    }

    static void end(Transfer* transfer, FetchAnswer answer)
    {
        Worker& worker = transfer->worker;
        worker.transfers_.erase(transfer);
        g_cancellable_cancel(transfer->cancellable.get()); // discards the rest of the body
        const Done done = std::move(transfer->done);
        const std::string origin = std::move(transfer->origin);
        delete transfer;
        done(std::move(answer));
        worker.leave(origin);
    }

    const Limits limits_;
    ObjectRef<SoupSession> session_;
    std::set<Transfer*> transfers_;
    std::set<Pausing*> pausing_;
    bool ends_ = false;
    // Pending background fetches, and queued ones, by origin.
    int active_ = 0;
    std::map<std::string, int> active_by_origin_;
    std::map<std::string, std::deque<Asked>> waiting_;
    ContextThread thread_; // last, so that it ends before the members it uses
};

SoupFetcher::SoupFetcher(MainLoop& loop) : SoupFetcher(loop, Limits{})
{
}

SoupFetcher::SoupFetcher(MainLoop& loop, const Limits& limits)
    : loop_(loop), limits_(limits), waiting_(std::make_shared<Waiting>()), worker_(std::make_unique<Worker>(limits))
{
}

SoupFetcher::~SoupFetcher()
{
    worker_.reset();
}

void SoupFetcher::fetch(const std::string& address, FetchKind kind, std::function<void(FetchAnswer)> answer)
{
    const std::uint64_t number = waiting_->next_number++;
    if (kind == FetchKind::Page && on_page_failure)
        answer = [this, address, answer = std::move(answer)](FetchAnswer fetched) {
            if (!fetched.ok)
                on_page_failure(address, fetched.error);
            answer(std::move(fetched));
        };
    waiting_->answers.emplace(number, std::move(answer));
    worker_->start(address, kind, false,
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
    // Shared with the worker, because either side may finish last.
    const auto promise = std::make_shared<std::promise<FetchAnswer>>();
    std::future<FetchAnswer> answer = promise->get_future();
    worker_->start(address, FetchKind::Image, true,
                   [promise](FetchAnswer arrived) { promise->set_value(std::move(arrived)); });
    // The worker enforces the time limit; the additional second covers a worker that is stuck.
    const bool in_time =
        answer.wait_for(std::chrono::duration<double>(limits_.waiting_seconds + 1)) == std::future_status::ready;
    FetchAnswer fetched = in_time ? answer.get() : failure("the fetch did not end in time");
    if (!fetched.ok && on_image_failure)
        on_image_failure(address, fetched.error);
    return fetched;
}

void SoupFetcher::abandon()
{
    // Destroyed last, because the callbacks' destructors may call this object.
    const auto gone = std::exchange(waiting_->answers, {});
}

void SoupFetcher::finish(double seconds)
{
    worker_->finish(seconds);
}

std::size_t SoupFetcher::pending() const
{
    return waiting_->answers.size();
}

} // namespace qoro
