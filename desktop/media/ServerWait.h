#pragma once

#include <atomic>
#include <chrono>

#include <gst/gst.h>

namespace qoro
{

/// Measures how long the reader of a video waits for data from the server.
class ServerWait
{
public:
    /// @param exit pad that the data is read from; must not outlive the object
    void watch(GstPad* exit)
    {
        constexpr int Before = static_cast<int>(GST_PAD_PROBE_TYPE_PULL) | static_cast<int>(GST_PAD_PROBE_TYPE_BLOCK);
        constexpr int After = static_cast<int>(GST_PAD_PROBE_TYPE_PULL) | static_cast<int>(GST_PAD_PROBE_TYPE_BUFFER);
        gst_pad_add_probe(exit, static_cast<GstPadProbeType>(Before), on_ask, this, nullptr);
        gst_pad_add_probe(exit, static_cast<GstPadProbeType>(After), on_get, this, nullptr);
    }
    /// Whether the pad operates in pull mode; if the server cannot serve ranges, data is pushed instead.
    bool reads() const { return reads_; }
    /// Whether the reader waited for most of the last interval. To be polled by one thread.
    bool prevails()
    {
        const Clock::time_point now = Clock::now();
        if (now - window_began_ >= While) {
            const Clock::duration waited = total(now);
            prevails_ = std::chrono::duration<double>(waited - waited_at_began_) >
                        MostOfIt * std::chrono::duration<double>(now - window_began_);
            window_began_ = now;
            waited_at_began_ = waited;
        }
        return prevails_;
    }

private:
    using Clock = std::chrono::steady_clock;

    /// The interval, and the fraction of it that counts as starvation. Data that was read ahead lasts about one
    /// interval.
    static constexpr std::chrono::milliseconds While{100};
    static constexpr double MostOfIt = 0.7;

    Clock::duration total(Clock::time_point now) const
    {
        const Clock::rep since = since_;
        return Clock::duration(finished_) +
               (since ? now - Clock::time_point(Clock::duration(since)) : Clock::duration(0));
    }
    static GstPadProbeReturn on_ask(GstPad*, GstPadProbeInfo*, gpointer wait)
    {
        ServerWait& self = *static_cast<ServerWait*>(wait);
        self.reads_ = true;
        self.since_ = Clock::now().time_since_epoch().count();
        return GST_PAD_PROBE_PASS; // any other result would block the pad
    }
    static GstPadProbeReturn on_get(GstPad*, GstPadProbeInfo*, gpointer wait)
    {
        ServerWait& self = *static_cast<ServerWait*>(wait);
        // In this order, a concurrent total() may be briefly too small, but never too large.
        const Clock::duration finished = self.total(Clock::now());
        self.since_ = 0;
        self.finished_ = finished.count();
        return GST_PAD_PROBE_OK;
    }

    std::atomic<bool> reads_ = false;
    /// Total of the finished waits; and the start of the current wait, 0 if there is none.
    std::atomic<Clock::rep> finished_ = 0;
    std::atomic<Clock::rep> since_ = 0;
    Clock::time_point window_began_;
    Clock::duration waited_at_began_{0};
    bool prevails_ = false;
};

} // namespace qoro
