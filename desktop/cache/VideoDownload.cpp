#include "desktop/cache/VideoDownload.h"

#include "desktop/cache/VideoCache.h"
#include "desktop/net/HttpAddress.h"
#include "desktop/net/Reach.h"
#include "desktop/net/RequestGuard.h"
#include "desktop/net/TransferWatch.h"
#include "desktop/net/UserAgent.h"

#include <libsoup/soup.h>

#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

namespace qoro
{

namespace
{
constexpr std::size_t PieceSize = 64u << 10;

/// Why an answer is unsuitable, judged before its body is read; empty if it can become a copy.
std::string fault_of(SoupMessage* message, std::uint64_t most_bytes)
{
    SoupMessageHeaders* headers = soup_message_get_response_headers(message);
    const guint status = soup_message_get_status(message);
    if (status != SOUP_STATUS_OK)
        return "HTTP status " + std::to_string(status);
    const char* type = soup_message_headers_get_content_type(headers, nullptr);
    if (type && std::string_view(type) == "text/html")
        return "the server sent a page, expected a video";
    if (soup_message_headers_get_one(headers, "Content-Encoding"))
        return "the server sent the video packed, expected it as it is";
    if (soup_message_headers_get_encoding(headers) != SOUP_ENCODING_CONTENT_LENGTH)
        return "the server did not say how long the video is";
    const goffset length = soup_message_headers_get_content_length(headers);
    if (length == 0)
        return "the video is empty";
    if (static_cast<std::uint64_t>(length) > most_bytes)
        return "the video has " + std::to_string(length) + " bytes, more than the whole cache may have (" +
               std::to_string(most_bytes) + ")";
    return "";
}
void cancel_request(GCancellable*, GCancellable* request)
{
    g_cancellable_cancel(request);
}

/// Cancels a request when a download is cancelled.
class CancelWith
{
public:
    CancelWith(GCancellable* download, GCancellable* request)
        : download_(download),
          handler_(g_cancellable_connect(download, reinterpret_cast<GCallback>(cancel_request), request, nullptr))
    {
    }
    ~CancelWith() { g_cancellable_disconnect(download_, handler_); }
    CancelWith(const CancelWith&) = delete;
    CancelWith& operator=(const CancelWith&) = delete;

private:
    GCancellable* const download_;
    const gulong handler_;
};
} // namespace

VideoDownload::VideoDownload() : VideoDownload(Limits{})
{
}

VideoDownload::VideoDownload(const Limits& limits)
    : limits_(limits),
      session_(
          adopt(soup_session_new_with_options("user-agent", UserAgent, "timeout", limits.silent_seconds, nullptr))),
      cancelled_(adopt(g_cancellable_new()))
{
    // Content-Length counts encoded bytes: without a decoder it matches the bytes that are read.
    soup_session_remove_feature_by_type(session_.get(), SOUP_TYPE_CONTENT_DECODER);
}

void VideoDownload::cancel()
{
    g_cancellable_cancel(cancelled_.get());
}

VideoDownload::Result VideoDownload::fetch(VideoCache& cache, const std::string& address,
                                           const std::function<void(std::uint64_t, std::uint64_t)>& received)
{
    if (const NSString path = cache.path_for(address)) {
        std::error_code gone;
        const std::uint64_t length = std::filesystem::file_size(path.text(), gone);
        return {.length = gone ? 0 : length, .was_there = true};
    }
    try {
        return receive(cache, address, received);
    } catch (const std::system_error& error) {
        return {.error = error.what()};
    }
}

VideoDownload::Result VideoDownload::receive(VideoCache& cache, const std::string& address,
                                             const std::function<void(std::uint64_t, std::uint64_t)>& received)
{
    const auto asked = HttpAddress::parse(address);
    if (!asked)
        return {.error = "not an address of http or https"};
    const auto message = adopt(soup_message_new_from_uri(SOUP_METHOD_GET, asked->uri()));
    const auto request = adopt(g_cancellable_new());
    const CancelWith cancel(cancelled_.get(), request.get());
    const RequestGuard guard(message.get(), *asked, request.get(), reach_of(asked));
    TransferWatch watch(request.get(), {limits_.least_speed, limits_.speed_seconds}, limits_.all_seconds);

    Error error;
    const auto failure = [&]() -> Result {
        if (guard.reason())
            return {.error = guard.reason()};
        const std::string slow = watch.reason();
        return {.error = slow.empty() ? error.message() : slow};
    };
    const auto stream = adopt(soup_session_send(session_.get(), message.get(), request.get(), error.out()));
    if (!stream)
        return failure();
    if (std::string fault = fault_of(message.get(), cache.most_bytes()); !fault.empty())
        return {.error = std::move(fault)};

    const auto length = static_cast<std::uint64_t>(
        soup_message_headers_get_content_length(soup_message_get_response_headers(message.get())));
    IncomingVideo video(cache, address);
    const std::unique_ptr<char[]> piece(new char[PieceSize]);
    for (;;) {
        const gssize got = g_input_stream_read(stream.get(), piece.get(), PieceSize, request.get(), error.out());
        if (got < 0)
            return failure();
        if (got == 0)
            break;
        video.write({piece.get(), static_cast<std::size_t>(got)});
        watch.received(video.length());
        if (received)
            received(video.length(), length);
    }
    if (video.length() != length)
        return {.error = "the server sent " + std::to_string(video.length()) + " bytes, and had said " +
                         std::to_string(length)};
    video.keep();
    return {.length = length};
}

} // namespace qoro
