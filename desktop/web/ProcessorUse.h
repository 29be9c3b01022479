#pragma once

#include <cstdint>
#include <optional>

namespace qoro
{

/// Knows how long a page's process has been taking the processors from a video: it works for more than one processor,
/// and the video drops frames.
class ProcessorUse
{
public:
    /// One more look.
    /// @param load of the process since the last look, in processors
    /// @param dropped frames that the videos have dropped so far
    /// @param seconds since the last look
    void look(double load, std::uint64_t dropped, double seconds)
    {
        since_drop_ = dropped_ && dropped != *dropped_ ? 0 : since_drop_ + seconds;
        dropped_ = dropped;
        starves_for_ = load > 1 && since_drop_ < DropLasts ? starves_for_ + seconds : 0;
    }
    /// Seconds without a pause.
    double starves_for() const { return starves_for_; }

private:
    /// Seconds without a dropped frame after which the video plays well again.
    static constexpr double DropLasts = 1;

    std::optional<std::uint64_t> dropped_;
    double since_drop_ = DropLasts;
    double starves_for_ = 0;
};

} // namespace qoro
