#include "desktop/net/HttpReader.h"

#include "desktop/net/HttpAnswer.h"
#include "desktop/net/Reach.h"
#include "desktop/net/UserAgent.h"
#include "kit/NetworkZone.h"

#include <libsoup/soup.h>

#include <utility>

namespace qoro
{

namespace
{

constexpr std::uint64_t BytesForABreak = 64u << 10;

/// @param error absent if the connection was closed regularly
const char* words_for(const Error& error, const char* usual)
{
    const bool silent = g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_TIMED_OUT);
    return silent ? "its server does not answer" : usual;
}

} // namespace

HttpReader::HttpReader(const std::string& address) : HttpReader(address, Limits{})
{
}

HttpReader::HttpReader(const std::string& address, const Limits& limits)
    : limits_(limits), address_(HttpAddress::parse(address)), reach_(reach_of(address_)),
      session_(adopt(soup_session_new_with_options("user-agent", UserAgent, "timeout", limits.silent_seconds, nullptr)))
{
    // Positions count the bytes as sent by the server, so nothing may decode them.
    soup_session_remove_feature_by_type(session_.get(), SOUP_TYPE_CONTENT_DECODER);
    // This machine is reached without a proxy. Asking GIO for one loads its modules and the desktop's settings, which
    // delays the first picture.
    if (zone_named_by(address) == NetworkZone::Machine)
        soup_session_set_proxy_resolver(session_.get(), nullptr);
}

HttpReader::~HttpReader()
{
    disconnect();
    soup_session_abort(session_.get());
}

HttpReader::Outcome HttpReader::read(std::uint64_t position, char* to, std::size_t room, std::size_t& got)
{
    got = 0;
    if (refused_)
        return Outcome::Failed;
    if (size_ && position >= *size_)
        return Outcome::End;
    for (int attempt = 0; attempt < limits_.attempts; ++attempt) {
        Connection state = Connection::Open;
        if (!stream_ || at_ != position)
            state = connect(position);
        if (state == Connection::Open) {
            Error error;
            const gssize count = g_input_stream_read(stream_.get(), to, room, cancellable_.get(), error.out());
            if (count > 0) {
                got = static_cast<std::size_t>(count);
                at_ += got;
                received_ += got;
                return Outcome::Bytes;
            }
            if (count == 0 && !size_)
                learn(at_, false);
            if (count == 0 && at_ >= *size_)
                return Outcome::End;
            state = broken(words_for(error, "its server hung up"));
        }
        disconnect();
        if (state == Connection::Stopped)
            return Outcome::Stopped;
        if (state == Connection::Refused || ++breaks_ > limits_.breaks + received_ / BytesForABreak)
            break;
    }
    return Outcome::Failed;
}

HttpReader::Connection HttpReader::connect(std::uint64_t position)
{
    disconnect();
    if (!address_)
        return refuse("its address is none of http or https");
    {
        const std::scoped_lock lock(mutex_);
        if (stopped_)
            return Connection::Stopped;
        cancellable_ = adopt(g_cancellable_new());
    }
    message_ = adopt(soup_message_new_from_uri(SOUP_METHOD_GET, address_->uri()));
    SoupMessageHeaders* asked = soup_message_get_request_headers(message_.get());
    soup_message_headers_replace(asked, "Accept-Encoding", "identity");
    if (position > 0) {
        soup_message_headers_set_range(asked, static_cast<goffset>(position), -1);
        if (!version_.empty())
            soup_message_headers_replace(asked, "If-Range", version_.c_str());
    }
    guard_.emplace(message_.get(), *address_, cancellable_.get(), reach_);
    Error error;
    stream_ = adopt(soup_session_send(session_.get(), message_.get(), cancellable_.get(), error.out()));
    if (!stream_ && guard_->reason())
        return refuse(guard_->reason());
    if (!stream_)
        return broken(words_for(error, "its server can't be reached"));
    return take_answer(position);
}

HttpReader::Connection HttpReader::take_answer(std::uint64_t position)
{
    const guint status = soup_message_get_status(message_.get());
    const HttpAnswer answer = read_answer(status, soup_message_get_response_headers(message_.get()));
    const bool part = status == SOUP_STATUS_PARTIAL_CONTENT;
    if (!part && status != SOUP_STATUS_OK)
        return refuse("HTTP status " + std::to_string(status));
    if (part && answer.first != position)
        return refuse("its server sent another part than was asked for");
    at_ = *answer.first;
    if (answer.packed)
        return refuse("its server sent it packed, expected it as it is");
    if ((size_ && answer.size && *size_ != *answer.size) ||
        (!version_.empty() && !answer.version.empty() && version_ != answer.version))
        return refuse("it has changed at its server");
    if (answer.size && *answer.size > limits_.size)
        return refuse("it is larger than " + std::to_string(limits_.size) + " bytes");
    if (!answer.version.empty())
        version_ = answer.version;
    // A server that answers a range request with the whole file does not support ranges.
    learn(answer.size, !answer.refuses_parts && (part || position == 0));
    return skip_to(position);
}

/// Reads and discards everything before the position, for servers that can only send the whole file.
HttpReader::Connection HttpReader::skip_to(std::uint64_t position)
{
    while (at_ < position) {
        Error error;
        const gssize count =
            g_input_stream_skip(stream_.get(), static_cast<gsize>(position - at_), cancellable_.get(), error.out());
        if (count <= 0)
            return broken(words_for(error, "its server hung up"));
        at_ += static_cast<std::uint64_t>(count);
    }
    return Connection::Open;
}

/// Once a server has failed to serve a range, can_jump() stays false.
void HttpReader::learn(std::optional<std::uint64_t> size, bool can_jump)
{
    const std::scoped_lock lock(mutex_);
    const bool could = !size_ || can_jump_;
    if (size)
        size_ = size;
    can_jump_ = size_ && can_jump && could;
}

HttpReader::Connection HttpReader::refuse(std::string reason)
{
    error_ = std::move(reason);
    refused_ = true;
    return Connection::Refused;
}

HttpReader::Connection HttpReader::broken(const char* reason)
{
    if (is_stopped())
        return Connection::Stopped;
    error_ = reason;
    return Connection::Broken;
}

void HttpReader::disconnect()
{
    {
        // Cancelled first: on a regular close, libsoup would wait for the rest of the body.
        const std::scoped_lock lock(mutex_);
        if (cancellable_)
            g_cancellable_cancel(cancellable_.get());
    }
    if (stream_)
        g_input_stream_close(stream_.get(), cancellable_.get(), nullptr);
    stream_.reset();
    guard_.reset();
    message_.reset();
    const std::scoped_lock lock(mutex_);
    cancellable_.reset();
}

std::optional<std::uint64_t> HttpReader::size() const
{
    const std::scoped_lock lock(mutex_);
    return size_;
}

bool HttpReader::can_jump() const
{
    const std::scoped_lock lock(mutex_);
    return can_jump_;
}

bool HttpReader::is_stopped()
{
    const std::scoped_lock lock(mutex_);
    return stopped_;
}

void HttpReader::stop()
{
    const std::scoped_lock lock(mutex_);
    stopped_ = true;
    if (cancellable_)
        g_cancellable_cancel(cancellable_.get());
}

void HttpReader::resume()
{
    const std::scoped_lock lock(mutex_);
    stopped_ = false;
}

} // namespace qoro
