#pragma once

#include "platform/Geometry.h"
#include "simulator/Summary.h"
#include "workbench/Sight.h"
#include "workbench/expression/Expression.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace qoro
{

/// Decides whether an expression holds in a session, while the session goes on. Times are microseconds since the
/// session's start and never decrease.
class Evaluation
{
public:
    /// @param expression outlives the evaluation
    /// @param screen in points, upright: what lies outside is not covered
    Evaluation(const ExpressionNode& expression, CGSize screen);
    ~Evaluation();
    Evaluation(const Evaluation&) = delete;
    Evaluation& operator=(const Evaluation&) = delete;

    /// Whether it depends on what the viewer sees, or on the session's figures.
    /// @{
    bool needs_sights() const;
    bool needs_summary() const;
    /// @}

    /// A line of the trace.
    /// @param json an object, without a line break
    void add_line(std::int64_t at, std::string_view json);
    /// From now on the viewer sees this.
    void add_sight(const Sight& sight);
    /// Nothing has happened until now.
    void pass(std::int64_t at);
    /// The session has ended.
    /// @param summary its figures; ignored unless needs_summary()
    void end(std::int64_t at, const Summary& summary);

    /// Absent while both are possible. After the end, absent if the session ended too early to tell: an ad that was
    /// watched for five seconds neither shows nor lacks a close button within fifteen.
    std::optional<bool> value() const;

private:
    /// What is known of one fact.
    struct Fact;
    /// A line, parsed when a condition first needs it.
    class Line;

    void collect(const ExpressionNode& node);
    std::optional<bool> value_of(const ExpressionNode& node, std::size_t& next) const;
    /// Judges the last sight, which has lasted until a time.
    void judge(std::int64_t until, bool ended);
    void judge(Fact& fact, std::int64_t until, bool ended);
    bool shows(const ExpressionNode& node, const Sight& sight) const;
    bool shows_view(const SightFact& fact, const Sight& sight) const;
    void decide(Fact& fact, std::int64_t at, const Summary& summary) const;

    const ExpressionNode& expression_;
    const CGSize screen_;
    /// In the order of the tree.
    std::vector<Fact> facts_;
    std::optional<Sight> sight_;
    /// When the ad was first seen open.
    std::optional<std::int64_t> opened_;
};

} // namespace qoro
