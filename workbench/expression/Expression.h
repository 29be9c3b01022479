#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace qoro
{

/// A text with wildcards, each of which matches any number of characters.
struct TextPattern {
    /// What stands between the wildcards: one more than there are wildcards.
    std::vector<std::string> parts;

    bool matches(std::string_view text) const;
};

/// What a value of a trace line has to be.
struct LineCondition {
    enum class Comparison : std::uint8_t { Equal, Unequal, Less, AtMost, Greater, AtLeast };

    /// Keys on the way to the value, from the outermost: {"data", "e"}.
    std::vector<std::string> path;
    Comparison comparison = Comparison::Equal;
    /// Of Equal and Unequal: matches a text, or the JSON text of any other value but null.
    TextPattern text = {};
    /// Whether the word null was written, which matches null.
    bool null = false;
    /// Whether a number was written.
    bool is_number = false;
    double number = 0;
};

/// Which lines of a trace are meant.
struct LinePattern {
    /// The line's kind: its "what". "*" for every line.
    std::string what;
    std::vector<LineCondition> conditions = {};
};

// What an expression consists of. Facts about the session as a whole:

/// So many lines of a kind exist.
struct LineCount {
    LinePattern line;
    std::size_t least = 1;
    std::size_t most = SIZE_MAX;
};
/// Lines of these kinds exist in this order, with others between them.
struct LineOrder {
    std::vector<LinePattern> lines;
};
/// Something happened, at any time or within so many seconds of the opening of the ad.
struct Happened {
    enum class What : std::uint8_t { AdOpened, AdClosed, ControllerReleased, ControllerDestroyed } what;
    double within = 0;
    bool is_timed = false;
};
/// Something was left behind.
struct LeftOver {
    enum class What : std::uint8_t { Timers, Observers, Windows, Listeners, Requests, Controller } what;
    /// At the moment of the close instead of the end of the session.
    bool after_close = false;
};
/// Synchronous fetches blocked the main thread for longer than so many seconds.
struct ThreadBlocked {
    double seconds = 0;
};

/// A fact about what the viewer sees or hears at one moment.
struct SightFact {
    enum class What : std::uint8_t {
        ViewCovered,
        ViewVisible,
        ViewTouchable,
        ViewOutside,
        ViewAbsent,
        ViewShows,
        VideoVisible,
        PageVisible,
        OverlayVisible,
        SoundAudible,
        CloseReachable,
        AdOpen
    } what;
    /// Of a view.
    std::string view = {};
    /// Of ViewShows.
    TextPattern text = {};
};
/// The only part, which consists of facts about a moment, holds at a time.
struct AtTime {
    enum class When : std::uint8_t {
        Sometime,
        /// When the session ends.
        End,
        /// So many seconds after the session's start.
        At,
        /// Sometime up to so many seconds after the opening of the ad.
        Within,
        /// Without interruption for so many seconds.
        For
    } when = When::Sometime;
    double seconds = 0;
};

/// Of the only part, the opposite.
struct Negation {
};
/// Every part holds.
struct Conjunction {
};
/// One part holds at least.
struct Disjunction {
};

/// A part of an expression.
struct ExpressionNode {
    std::variant<Negation, Conjunction, Disjunction, AtTime, SightFact, LineCount, LineOrder, Happened, LeftOver,
                 ThreadBlocked>
        what;
    std::vector<ExpressionNode> parts = {};
};

/// Reads an expression (docs/shrink.md). In the result, each fact about a moment is within an AtTime.
/// @param name of what the text belongs to, for error messages: "--while"
/// @throws InputError: "--while: column 6: expected …"
ExpressionNode parse_expression(std::string_view text, const std::string& name);

} // namespace qoro
