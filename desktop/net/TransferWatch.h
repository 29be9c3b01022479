#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

typedef struct _GCancellable GCancellable;

namespace qoro
{

/// Whether a transfer keeps a minimum speed, averaged over consecutive intervals. Not thread-safe.
class LeastSpeed
{
public:
    /// @param speed bytes per second; 0: every transfer is fast enough
    /// @param interval seconds
    LeastSpeed(double speed, double interval) : speed_(speed), interval_(interval) {}

    /// To be called repeatedly, at least once per interval.
    /// @param now seconds of any steady clock
    /// @param bytes transferred so far
    /// @return whether an interval has ended with too few bytes
    bool is_undercut(double now, std::uint64_t bytes)
    {
        if (began_ && now - *began_ < interval_)
            return false;
        const bool slow = began_ && static_cast<double>(bytes - before_) < speed_ * (now - *began_);
        began_ = now;
        before_ = bytes;
        return slow;
    }
    /// The reason in words.
    std::string reason() const;

private:
    const double speed_;
    const double interval_;
    std::optional<double> began_;
    std::uint64_t before_ = 0;
};

/// Cancels a request that takes too long or is too slow, from a thread of its own: a server that sends a byte of its
/// header now and then would block the request for ever.
class TransferWatch
{
public:
    /// @param request must outlive the object
    /// @param seconds maximum time for the whole transfer
    TransferWatch(GCancellable* request, const LeastSpeed& speed, double seconds);
    /// Ends the watch; the request is not cancelled afterwards.
    ~TransferWatch();
    TransferWatch(const TransferWatch&) = delete;
    TransferWatch& operator=(const TransferWatch&) = delete;

    /// The bytes of the body so far.
    void received(std::uint64_t bytes) { bytes_ = bytes; }
    /// Why the request was cancelled, in words; empty if it was not.
    std::string reason();

private:
    void watch();

    GCancellable* const request_;
    LeastSpeed speed_;
    const double seconds_;
    std::atomic<std::uint64_t> bytes_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    // Guarded by mutex_.
    bool over_ = false;
    std::string reason_;
    std::thread thread_;
};

} // namespace qoro
