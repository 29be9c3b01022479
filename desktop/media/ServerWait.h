#pragma once

#include <atomic>
#include <chrono>

#include <gst/gst.h>

namespace qoro
{

/// How long reading a video waits for what the server sends.
class ServerWait
{
public:
    /// @param exit where the data is read from; this outlives it
    void watch(GstPad* exit)
    {
        constexpr int Before = static_cast<int>(GST_PAD_PROBE_TYPE_PULL) | static_cast<int>(GST_PAD_PROBE_TYPE_BLOCK);
        constexpr int After = static_cast<int>(GST_PAD_PROBE_TYPE_PULL) | static_cast<int>(GST_PAD_PROBE_TYPE_BUFFER);
        gst_pad_add_probe(exit, static_cast<GstPadProbeType>(Before), on_ask, this, nullptr);
        gst_pad_add_probe(exit, static_cast<GstPadProbeType>(After), on_get, this, nullptr);
    }
    /// Whether data is read; it is poured in, unasked, when the server can only send from the start.
    bool reads() const { return reads_; }
    /// Whether it waited most of the last while. To be asked again and again, by one thread.
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

    /// The last while, and the share of it that counts as most: data is lacking when reading on has waited so long.
    /// What was read before lasts about as long.
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
        return GST_PAD_PROBE_PASS; // anything else would block the pad
    }
    static GstPadProbeReturn on_get(GstPad*, GstPadProbeInfo*, gpointer wait)
    {
        ServerWait& self = *static_cast<ServerWait*>(wait);
        // In this order a reader between the two sees too little for a moment, never too much.
        const Clock::duration finished = self.total(Clock::now());
        self.since_ = 0;
        self.finished_ = finished.count();
        return GST_PAD_PROBE_OK;
    }

    std::atomic<bool> reads_ = false;
    /// Waits that are over, in all; and when the one that goes on began, 0 when none does.
    std::atomic<Clock::rep> finished_ = 0;
    std::atomic<Clock::rep> since_ = 0;
    Clock::time_point window_began_;
    Clock::duration waited_at_began_{0};
    bool prevails_ = false;
};

} // namespace qoro
