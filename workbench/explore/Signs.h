#pragma once

#include "formats/AddressPattern.h"
#include "platform/Events.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

namespace qoro
{

class QoroVideoAd;
class Simulation;

/// Something in a session that a rule may object to: an address that is requested, a picture of the screen, what a
/// touch leads to. Equal ones have equal numbers.
using Sign = std::uint64_t;

/// What has happened between two moments of a session; depends on nothing before.
struct Passage {
    std::vector<Sign> signs = {};
    /// Trackers of positions in the video that have been sent, a bit for each.
    std::uint64_t sent = 0;
    /// Whether the video has ended.
    bool ended = false;

    bool operator==(const Passage&) const = default;
};

/// The trackers of an ad that are sent at positions of its video, at most 64.
std::vector<AddressPattern> position_trackers(const QoroVideoAd& ad);

/// Appends the signs of trackers: that one is sent again, and those with which the video ends.
/// @param before bits of the trackers that the course has sent before
void add_tracker_signs(std::uint64_t before, const Passage& happened, std::vector<Sign>& signs);

/// The sign of a course that goes on as another that it joins: a tracker may be sent again then, or never.
/// @param sent bits of the trackers that the course has sent
/// @param joined those that the other has sent
/// @return absent if they are the same
std::optional<Sign> sign_of_joining(std::uint64_t sent, std::uint64_t joined);

/// The sign of a control that is touched several times in a course.
Sign sign_of_touches(std::string_view control, std::size_t times);

/// Collects the signs of a session from its last move on.
class SignCollector
{
public:
    /// @param positions the ad's, as position_trackers() gives them; outlives the collector
    SignCollector(Simulation& simulation, const std::vector<AddressPattern>& positions)
        : simulation_(simulation), positions_(positions)
    {
    }

    /// Forgets what has happened: a move follows.
    /// @param move its name; empty for the beginning
    void begin(std::string_view move);
    void note(const Event& event);
    /// At a moment: what has happened since the last one, and what the viewer sees now.
    Passage take();
    /// At the end of a session: what has happened since its last moment.
    Passage rest();

private:
    void note_request(std::string_view url, RequestPurpose purpose);
    /// For how long the last picture has been seen.
    void note_duration(std::int64_t now);
    /// Which kinds of events have happened.
    void note_kinds(std::string_view move);

    Simulation& simulation_;
    const std::vector<AddressPattern>& positions_;
    Passage happened_;
    std::string_view move_;
    /// The kinds of events since the last moment, a bit for each.
    std::array<std::uint64_t, std::variant_size_v<Event> / 64 + 1> kinds_{};
    Sign picture_ = 0;
    /// Microseconds.
    std::int64_t picture_at_ = 0;
    /// Whether no moment has followed the move.
    bool at_once_ = true;
};

} // namespace qoro
