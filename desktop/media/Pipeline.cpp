#include "desktop/media/Pipeline.h"

#include "desktop/glib/Owned.h"
#include "desktop/glib/StartupTrace.h"
#include "desktop/media/LibavLibrary.h"
#include "desktop/media/Mailbox.h"
#include "desktop/media/MediaFramework.h"
#include "desktop/media/StreamKind.h"
#include "desktop/media/StreamSinks.h"
#include "desktop/media/VideoFeed.h"
#include "desktop/media/Workers.h"

#include <gst/gst.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string_view>
#include <utility>

namespace qoro
{

namespace
{
std::atomic<std::uint64_t> dropped = 0;
/// Seconds of data that must be buffered before a video from a server starts or resumes: decoded frames, and bytes at
/// the video's average rate.
constexpr double ReadyTime = 2.0;
/// Seconds by which a complete video may be shorter than its stated duration.
constexpr double MissingAtMost = 0.5;
/// Time limits for opening the sound, and for loading after the source has failed.
constexpr std::chrono::milliseconds SoundTimeOut{1000};
constexpr std::chrono::milliseconds SourceGrace{1000};
/// Maximum number of restarts of a state change; a source may report one fault several times.
constexpr int MostResumptions = 5;
/// Polling interval of waits.
constexpr std::chrono::milliseconds Glance{25};
/// Pixels per second up to which a video is decoded on one thread (1080p at 30 frames per second). That is cheapest,
/// and avoids the latency of frame threads.
constexpr double OneThreadPixels = 1920.0 * 1080.0 * 31.0;

using Clock = std::chrono::steady_clock;

/// Media types that refer to other sources and contain no video.
constexpr std::array<std::string_view, 6> Manifests = {
    "application/x-hls", "application/dash+xml", "application/vnd.ms-sstr+xml",
    "application/sdp",   "text/uri-list",        "application/x-rtsp",
};

using Bus = Owned<GstBus, gst_object_unref>;
using Element = Owned<GstElement, gst_object_unref>;
using Message = Owned<GstMessage, gst_message_unref>;

double seconds(gint64 time)
{
    return static_cast<double>(time) / static_cast<double>(GST_SECOND);
}

gint64 gst_time(double time)
{
    return std::llround(std::max(time, 0.0) * static_cast<double>(GST_SECOND));
}

} // namespace

struct Pipeline::Core {
    Core(const Opening& how, std::shared_ptr<VideoPictures> to, MainLoop& loop, Listener& heard)
        : mailbox(std::make_shared<Mailbox>(loop)), listener(&heard), low(!how.is_file),
          feed(how.location, how.is_file, how.server_seconds,
               {.changed = [this] { wake(); }, .failed = [this](const std::string& reason) { fail(reason); }}),
          sinks(std::move(to), how.silent, how.volume), is_file(how.is_file)
    {
    }

    const std::shared_ptr<Mailbox> mailbox;
    /// Main thread only.
    Listener* listener;

    std::mutex mutex;
    std::condition_variable wishes_changed;
    // Guarded by mutex: the wanted state.
    bool closing = false;
    bool playing = false;
    double seek_to = 0;
    unsigned seeks = 0;
    // Guarded by mutex: failures.
    bool failed = false;
    std::string source_failure;
    Clock::time_point source_failed_at;

    /// Set once by the worker; valid until close().
    std::atomic<GstElement*> pipeline = nullptr;
    /// Seconds; 0 before it is known.
    std::atomic<double> duration = 0;
    std::atomic<unsigned> seeks_done = 0;
    std::atomic<bool> low;
    VideoFeed feed;
    StreamSinks sinks;
    const bool is_file;
    std::atomic<double> pixel_rate = 0;
    /// Whether every stream of the video has its sink.
    std::atomic<bool> streams_known = false;

    // Worker thread.
    void work();
    bool open();
    bool settle(unsigned for_seek);
    void obey();
    bool has_started();
    void watch_data(bool runs);
    bool seek(double time);
    void close();

    // Any thread.
    /// Converts GStreamer's position to seconds; the mutex is held. Before any data has arrived GStreamer returns the
    /// duration, so the target of the last seek is used.
    double reached(gint64 position) const { return sinks.got_any() ? seconds(position) : seek_to; }
    void notify(void (Listener::*news)())
    {
        mailbox->post([this, news] { (listener->*news)(); });
    }
    void fail(const std::string& reason);
    void set_low(bool is_low);
    void wake();
    bool wanted_otherwise(unsigned for_seek);

    // GStreamer's threads.
    void hear(GstMessage* message);
    void hear_error(GstMessage* message);
    void hear_request(GstMessage* message);
    void hear_end();
    void add_stream(GstPad* pad);

    static GstBusSyncReply on_message(GstBus*, GstMessage* message, gpointer core)
    {
        const Message owned(message);
        static_cast<Core*>(core)->hear(message);
        return GST_BUS_DROP;
    }
    static void on_pad(GstElement*, GstPad* pad, gpointer core) { static_cast<Core*>(core)->add_stream(pad); }
    static void on_all_pads(GstElement*, gpointer core);
    static gboolean on_kind(GstElement*, GstPad*, GstCaps* caps, gpointer core);
    static void on_element(GstBin*, GstBin*, GstElement* element, gpointer core);
};

// --------------------------------------------------------------------------------------------------- Main thread

Pipeline::Pipeline(const Opening& opening, std::shared_ptr<VideoPictures> pictures, MainLoop& loop, Listener& listener)
    : core_(std::make_shared<Core>(opening, std::move(pictures), loop, listener))
{
    Workers::all().start([core = core_] { core->work(); });
}

Pipeline::~Pipeline()
{
    core_->mailbox->close();
    std::scoped_lock lock(core_->mutex);
    core_->closing = true;
    core_->wishes_changed.notify_all();
}

void Pipeline::set_listener(Listener& listener)
{
    core_->listener = &listener;
}

void Pipeline::run(bool playing)
{
    std::scoped_lock lock(core_->mutex);
    core_->playing = playing;
    core_->wishes_changed.notify_all();
}

void Pipeline::seek(double time)
{
    std::scoped_lock lock(core_->mutex);
    core_->seek_to = time;
    ++core_->seeks;
    core_->wishes_changed.notify_all();
}

bool Pipeline::seeking() const
{
    std::scoped_lock lock(core_->mutex);
    return core_->seeks_done != core_->seeks;
}

std::optional<double> Pipeline::position() const
{
    gint64 position = 0;
    if (core_->duration <= 0 || seeking() || !gst_element_query_position(core_->pipeline, GST_FORMAT_TIME, &position) ||
        position < 0)
        return {};
    std::scoped_lock lock(core_->mutex);
    return core_->reached(position);
}

bool Pipeline::short_of_data() const
{
    return core_->low;
}

std::uint64_t Pipeline::received_bytes() const
{
    return core_->feed.received();
}

std::uint64_t Pipeline::whole_bytes() const
{
    return core_->feed.size();
}

void Pipeline::warm_up()
{
    static std::once_flag once;
    std::call_once(once, [] {
        start_media_framework();
        startup_point("media framework started");
        // Loading these plug-ins takes most of the time to the first picture of a program.
        Workers::all().start([] {
            for (const char* name : {"filesrc", "queue2", "decodebin", "multiqueue", "qtdemux", "h264parse", "aacparse",
                                     "appsink", "audioconvert", "audioresample", "pulsesink"}) {
                const Element element(gst_element_factory_make(name, nullptr));
            }
            libav();
            startup_point("decoders loaded");
        });
    });
}

std::uint64_t Pipeline::dropped_frames()
{
    return dropped;
}

void Pipeline::wait_until_gone(double seconds)
{
    Workers::all().wait(seconds);
}

// -------------------------------------------------------------------------------------------------- Worker thread

void Pipeline::Core::work()
{
    if (open() && settle(0)) {
        gint64 length = 0;
        if (!gst_element_query_duration(pipeline, GST_FORMAT_TIME, &length) || length <= 0) {
            fail("its duration is not known");
        } else {
            startup_point("video loaded");
            duration = seconds(length);
            feed.learn_rate(duration);
            watch_data(false);
            mailbox->post([this] { listener->loaded(duration); });
        }
    }
    obey();
    close();
}

bool Pipeline::Core::open()
{
    startup_point("video requested");
    GstElement* whole = gst_pipeline_new(nullptr);
    pipeline = whole;
    gst_bus_set_sync_handler(Bus(gst_element_get_bus(whole)).get(), on_message, this, nullptr);

    GstElement* before_decoder = feed.add_to(GST_BIN(whole));
    if (!before_decoder)
        return false;
    GstElement* decoder = gst_element_factory_make("decodebin", nullptr);
    if (!decoder) {
        fail("GStreamer has no element decodebin");
        return false;
    }
    gst_bin_add(GST_BIN(whole), decoder);
    gst_element_link(before_decoder, decoder);
    g_signal_connect(decoder, "autoplug-continue", G_CALLBACK(on_kind), this);
    g_signal_connect(decoder, "pad-added", G_CALLBACK(on_pad), this);
    g_signal_connect(decoder, "no-more-pads", G_CALLBACK(on_all_pads), this);
    g_signal_connect(whole, "deep-element-added", G_CALLBACK(on_element), this);
    if (gst_element_set_state(whole, GST_STATE_PAUSED) == GST_STATE_CHANGE_FAILURE) {
        fail("it can't be opened");
        return false;
    }
    return true;
}

bool Pipeline::Core::wanted_otherwise(unsigned for_seek)
{
    std::scoped_lock lock(mutex);
    return closing || failed || seeks != for_seek;
}

// Waits until picture and sound are prerolled at the current position. Returns false if that fails or is no longer
// wanted.
bool Pipeline::Core::settle(unsigned for_seek)
{
    int resumptions = 0;
    while (!wanted_otherwise(for_seek)) {
        const GstStateChangeReturn state =
            gst_element_get_state(pipeline, nullptr, nullptr, std::chrono::nanoseconds(Glance).count());
        const bool still = state == GST_STATE_CHANGE_SUCCESS || state == GST_STATE_CHANGE_NO_PREROLL;
        if (still && streams_known)
            return true;
        std::unique_lock lock(mutex);
        // Restarted after a fault, the pipeline reports success while it still searches for its streams.
        if (still)
            wishes_changed.wait_for(lock, Glance, [this] { return closing || failed || streams_known.load(); });
        // The error message follows shortly after the failed state change.
        if (state == GST_STATE_CHANGE_FAILURE)
            wishes_changed.wait_for(lock, Glance, [this] { return closing || failed || !source_failure.empty(); });
        const bool source_fault = !source_failure.empty();
        const bool given_up = source_fault && duration <= 0 && Clock::now() - source_failed_at > SourceGrace;
        lock.unlock();
        if (state == GST_STATE_CHANGE_FAILURE && source_fault && resumptions < MostResumptions) {
            // Any error fails the state change, but the data that the source sent before may suffice for it.
            ++resumptions;
            gst_element_set_state(pipeline, GST_STATE_PAUSED);
        } else if (state == GST_STATE_CHANGE_FAILURE || given_up) {
            fail("it can't be played");
            return false;
        }
        if (duration > 0 && !feed.complete() && feed.starved())
            set_low(true);
        if (sinks.opening_sound_since() > SoundTimeOut) {
            notify(&Listener::sound_failed);
            return false;
        }
    }
    return false;
}

void Pipeline::Core::obey()
{
    bool runs = false;
    bool moves = false;
    unsigned done = 0;
    std::unique_lock lock(mutex);
    while (!closing) {
        const bool able = !failed && duration > 0;
        if (able && seeks != done) {
            const unsigned wanted = seeks;
            const double to = seek_to;
            lock.unlock();
            // A paused sink reports no end of stream, so an end that is reported later belongs to the time after the
            // seek.
            gst_element_set_state(pipeline, GST_STATE_PAUSED);
            runs = false;
            const bool reached = seek(to);
            if (reached)
                settle(wanted);
            seeks_done = wanted;
            mailbox->post([this, wanted, reached] {
                std::unique_lock inner(mutex);
                const bool last = seeks == wanted;
                inner.unlock();
                if (last)
                    listener->sought(reached);
            });
            lock.lock();
            done = wanted;
        } else if (able && playing != runs) {
            runs = playing;
            moves = false;
            lock.unlock();
            const GstStateChangeReturn changed =
                gst_element_set_state(pipeline, runs ? GST_STATE_PLAYING : GST_STATE_PAUSED);
            if (changed == GST_STATE_CHANGE_FAILURE)
                fail("it can't be played");
            lock.lock();
        } else if (able && runs && !moves && !source_failure.empty()) {
            wishes_changed.wait_for(lock, Glance);
            lock.unlock();
            moves = has_started();
            lock.lock();
        } else if (able && (low || (runs && !feed.complete()))) {
            wishes_changed.wait_for(lock, Glance);
            lock.unlock();
            watch_data(runs);
            lock.lock();
        } else {
            wishes_changed.wait(lock);
        }
    }
}

// A failure of the source can interrupt the change to PLAYING. It is repeated, so that the data received before is
// played.
bool Pipeline::Core::has_started()
{
    GstState state = GST_STATE_NULL;
    const GstStateChangeReturn change = gst_element_get_state(pipeline, &state, nullptr, 0);
    if (change != GST_STATE_CHANGE_ASYNC && state != GST_STATE_PLAYING)
        gst_element_set_state(pipeline, GST_STATE_PLAYING);
    return change != GST_STATE_CHANGE_ASYNC && state == GST_STATE_PLAYING;
}

// Data runs short when the reader has to wait for it. It suffices again when nothing waits and enough is buffered, or
// when no more will come because the source is complete or has failed.
void Pipeline::Core::watch_data(bool runs)
{
    std::unique_lock lock(mutex);
    const bool is_all = feed.complete() || !source_failure.empty();
    lock.unlock();
    if (is_all)
        set_low(false);
    else if (low)
        set_low(feed.seconds_ready() + sinks.seconds_ahead() < ReadyTime || feed.starved());
    else
        set_low(runs && feed.starved());
}

bool Pipeline::Core::seek(double time)
{
    return gst_element_seek_simple(pipeline, GST_FORMAT_TIME,
                                   static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                                   gst_time(time));
}

void Pipeline::Core::close()
{
    const Element whole(pipeline);
    gst_element_set_state(whole.get(), GST_STATE_NULL);
    gst_bus_set_sync_handler(Bus(gst_element_get_bus(whole.get())).get(), nullptr, nullptr, nullptr);
}

// ----------------------------------------------------------------------------------------------------- Any thread

// A failure of the source takes precedence, because the others result from it.
void Pipeline::Core::fail(const std::string& reason)
{
    std::string cause;
    {
        std::scoped_lock lock(mutex);
        if (failed)
            return;
        failed = true;
        cause = source_failure.empty() ? reason : source_failure;
        wishes_changed.notify_all();
    }
    mailbox->post([this, cause] { listener->failed(cause); });
}

void Pipeline::Core::set_low(bool is_low)
{
    {
        std::scoped_lock lock(mutex);
        if (low == is_low)
            return;
        low = is_low;
        wishes_changed.notify_all();
    }
    notify(&Listener::data_changed);
}

void Pipeline::Core::wake()
{
    std::scoped_lock lock(mutex);
    wishes_changed.notify_all();
}

// ---------------------------------------------------------------------------------------------- GStreamer's threads

void Pipeline::Core::hear(GstMessage* message)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ERROR:
        hear_error(message);
        break;
    case GST_MESSAGE_EOS:
        if (GST_MESSAGE_SRC(message) == GST_OBJECT(pipeline.load()))
            hear_end();
        break;
    case GST_MESSAGE_REQUEST_STATE:
        hear_request(message);
        break;
    case GST_MESSAGE_QOS:
        ++dropped;
        break;
    default:
        break;
    }
}

void Pipeline::Core::hear_error(GstMessage* message)
{
    Error error;
    gst_message_parse_error(message, error.out(), nullptr);
    std::string reason = error ? error.message() : "an unknown fault";
    GstObject* from = GST_MESSAGE_SRC(message);
    if (sinks.is_of_sound(from)) {
        notify(&Listener::sound_failed);
        return;
    }
    if (feed.is_source(from)) {
        // GStreamer's own message for this case is not helpful.
        if (is_file && g_error_matches(error.get(), GST_STREAM_ERROR, GST_STREAM_ERROR_FAILED))
            reason = "it can't be read";
        // The data received before can still be played; the end of stream that follows is caused by this failure.
        std::scoped_lock lock(mutex);
        if (source_failure.empty()) {
            source_failure = reason;
            source_failed_at = Clock::now();
            wishes_changed.notify_all();
        }
        return;
    }
    fail(reason);
}

/// The sound sink passes on what the sound server asks for.
void Pipeline::Core::hear_request(GstMessage* message)
{
    GstState state = GST_STATE_NULL;
    gst_message_parse_request_state(message, &state);
    if (!sinks.is_of_sound(GST_MESSAGE_SRC(message)) || (state != GST_STATE_PAUSED && state != GST_STATE_PLAYING))
        return;
    const SoundRequest request = state == GST_STATE_PAUSED ? SoundRequest::Pause : SoundRequest::Resume;
    mailbox->post([this, request] { listener->sound_requested(request); });
}

void Pipeline::Core::hear_end()
{
    gint64 position = 0;
    const bool known = gst_element_query_position(pipeline, GST_FORMAT_TIME, &position);
    std::unique_lock lock(mutex);
    const bool cut = !source_failure.empty();
    const bool stands = !sinks.got_any();
    const double end = reached(position);
    lock.unlock();
    // If the source failed after the last picture, nothing was lost.
    if (known || stands ? end < duration - MissingAtMost : cut) {
        fail("it ends before its duration says");
        return;
    }
    mailbox->post([this, after = seeks_done.load()] {
        std::unique_lock inner(mutex);
        const bool current = after == seeks;
        inner.unlock();
        if (current)
            listener->ended();
    });
}

gboolean Pipeline::Core::on_kind(GstElement*, GstPad*, GstCaps* caps, gpointer core)
{
    const std::string_view kind = stream_kind(caps);
    if (std::find(Manifests.begin(), Manifests.end(), kind) != Manifests.end())
        return FALSE;
    if (kind.starts_with("video/")) {
        const GstStructure* form = gst_caps_get_structure(caps, 0);
        gint width = 0;
        gint height = 0;
        gint frames = 30;
        gint per_seconds = 1;
        gst_structure_get_int(form, "width", &width);
        gst_structure_get_int(form, "height", &height);
        gst_structure_get_fraction(form, "framerate", &frames, &per_seconds);
        static_cast<Core*>(core)->pixel_rate =
            static_cast<double>(width) * height * (per_seconds > 0 ? static_cast<double>(frames) / per_seconds : 30);
    }
    return TRUE;
}

void Pipeline::Core::on_element(GstBin*, GstBin*, GstElement* element, gpointer core)
{
    Core& self = *static_cast<Core*>(core);
    if (self.pixel_rate <= OneThreadPixels && g_object_class_find_property(G_OBJECT_GET_CLASS(element), "max-threads"))
        g_object_set(element, "max-threads", 1, nullptr);
}

void Pipeline::Core::add_stream(GstPad* pad)
{
    if (!sinks.add(GST_BIN(pipeline.load()), pad))
        fail("GStreamer has no element appsink");
}

void Pipeline::Core::on_all_pads(GstElement*, gpointer core)
{
    Core& self = *static_cast<Core*>(core);
    if (!self.sinks.has_any())
        self.fail("it is no video");
    self.streams_known = true;
    self.wake();
}

} // namespace qoro
