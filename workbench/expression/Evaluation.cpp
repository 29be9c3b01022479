#include "workbench/expression/Evaluation.h"

#include "simulator/VirtualLoop.h"
#include "workbench/detail/Json.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <type_traits>

namespace qoro
{

using detail::Json;

namespace
{

bool compare(LineCondition::Comparison comparison, double value, double with)
{
    using enum LineCondition::Comparison;
    switch (comparison) {
    case Equal:
        return value == with;
    case Unequal:
        return value != with;
    case Less:
        return value < with;
    case AtMost:
        return value <= with;
    case Greater:
        return value > with;
    case AtLeast:
        break;
    }
    return value >= with;
}

bool is_equal(const LineCondition& condition, const Json& value)
{
    if (value.is_null())
        return condition.null;
    if (condition.is_number && value.is_number() && value.get<double>() == condition.number)
        return true;
    return condition.text.matches(value.is_string() ? value.get_ref<const std::string&>()
                                                    : value.dump(-1, ' ', false, Json::error_handler_t::replace));
}

/// The value below a key or, of a list, an index; null if there is none.
const Json* below(const Json& value, const std::string& key)
{
    if (value.is_object()) {
        const auto found = value.find(key);
        return found == value.end() ? nullptr : &*found;
    }
    std::size_t index = 0;
    const auto [end, error] = std::from_chars(key.data(), key.data() + key.size(), index);
    const bool is_index = value.is_array() && error == std::errc() && end == key.data() + key.size();
    return is_index && index < value.size() ? &value[index] : nullptr;
}

bool holds(const LineCondition& condition, const Json& line)
{
    const Json* value = &line;
    for (const std::string& key : condition.path) {
        value = below(*value, key);
        if (!value)
            return false;
    }
    if (condition.comparison == LineCondition::Comparison::Equal)
        return is_equal(condition, *value);
    if (condition.comparison == LineCondition::Comparison::Unequal)
        return !is_equal(condition, *value);
    return value->is_number() && compare(condition.comparison, value->get<double>(), condition.number);
}

/// The value of "what", which follows the time.
std::string_view kind_of(std::string_view json)
{
    constexpr std::string_view Key = R"("what":")";
    const std::size_t begin = json.find(Key);
    if (begin == std::string_view::npos)
        return {};
    const std::string_view rest = json.substr(begin + Key.size());
    return rest.substr(0, rest.find('"'));
}

double area(const CGRect& rect)
{
    return rect.width > 0 && rect.height > 0 ? rect.width * rect.height : 0;
}

/// The part of a frame that is on the screen.
CGRect on_screen(const CGRect& frame, CGSize screen)
{
    const double left = std::max(frame.x, 0.0);
    const double top = std::max(frame.y, 0.0);
    return {left, top, std::min(frame.x + frame.width, screen.width) - left,
            std::min(frame.y + frame.height, screen.height) - top};
}

std::size_t left_count(LeftOver::What what, const LeftBehind& left)
{
    switch (what) {
    case LeftOver::What::Timers:
        return left.timers.size();
    case LeftOver::What::Observers:
        return left.observers;
    case LeftOver::What::Windows:
        return left.windows;
    case LeftOver::What::Listeners:
        return left.listeners;
    case LeftOver::What::Requests:
        return left.requests;
    case LeftOver::What::Controller:
        break;
    }
    return left.controller == LeftBehind::Controller::Gone ? 0 : 1;
}

std::optional<std::int64_t> time_of(Happened::What what, const Summary& summary)
{
    switch (what) {
    case Happened::What::AdOpened:
        return summary.opened;
    case Happened::What::AdClosed:
        return summary.closed;
    case Happened::What::ControllerReleased:
        return summary.released;
    case Happened::What::ControllerDestroyed:
        break;
    }
    return summary.destroyed;
}

/// Whether something happened early enough; absent if it still could have.
std::optional<bool> in_time(const Happened& happened, const Summary& summary, std::int64_t end)
{
    const auto at = time_of(happened.what, summary);
    if (!happened.is_timed)
        return at.has_value();
    if (!summary.opened)
        return std::nullopt;
    const std::int64_t last = *summary.opened + to_microseconds(happened.within);
    if (at)
        return *at <= last;
    return end >= last ? std::optional(false) : std::nullopt;
}

} // namespace

class Evaluation::Line
{
public:
    explicit Line(std::string_view text) : text_(text), kind_(kind_of(text)) {}

    bool is(const LinePattern& pattern)
    {
        if (pattern.what != "*" && pattern.what != kind_)
            return false;
        if (pattern.conditions.empty())
            return true;
        if (!json_)
            json_ = Json::parse(text_, nullptr, false);
        return std::ranges::all_of(pattern.conditions, [&](const auto& each) { return holds(each, *json_); });
    }

private:
    const std::string_view text_;
    const std::string_view kind_;
    std::optional<Json> json_;
};

struct Evaluation::Fact {
    const ExpressionNode* node = nullptr;
    std::optional<bool> value = {};
    /// Lines of the kind, or lines of the order, so far.
    std::size_t lines = 0;
    /// Of a fact about a moment: since when it has held; absent while it does not.
    std::optional<std::int64_t> since = {};
};

Evaluation::Evaluation(const ExpressionNode& expression, CGSize screen) : expression_(expression), screen_(screen)
{
    collect(expression);
}

Evaluation::~Evaluation() = default;

void Evaluation::collect(const ExpressionNode& node)
{
    const bool is_connection = std::holds_alternative<Negation>(node.what) ||
                               std::holds_alternative<Conjunction>(node.what) ||
                               std::holds_alternative<Disjunction>(node.what);
    if (!is_connection) {
        Fact fact{.node = &node};
        // Zero lines are "at most" every number.
        if (const auto* count = std::get_if<LineCount>(&node.what);
            count && count->least == 0 && count->most == SIZE_MAX)
            fact.value = true;
        facts_.push_back(fact);
        return;
    }
    for (const ExpressionNode& part : node.parts)
        collect(part);
}

bool Evaluation::needs_sights() const
{
    return std::ranges::any_of(facts_,
                               [](const Fact& fact) { return std::holds_alternative<AtTime>(fact.node->what); });
}

bool Evaluation::needs_summary() const
{
    return std::ranges::any_of(facts_, [](const Fact& fact) {
        return std::holds_alternative<Happened>(fact.node->what) || std::holds_alternative<LeftOver>(fact.node->what) ||
               std::holds_alternative<ThreadBlocked>(fact.node->what);
    });
}

void Evaluation::add_line(std::int64_t at, std::string_view json)
{
    pass(at);
    Line line(json);
    for (Fact& fact : facts_) {
        if (fact.value)
            continue;
        if (const auto* count = std::get_if<LineCount>(&fact.node->what); count && line.is(count->line)) {
            ++fact.lines;
            if (fact.lines > count->most)
                fact.value = false;
            else if (fact.lines >= count->least && count->most == SIZE_MAX)
                fact.value = true;
        }
        if (const auto* order = std::get_if<LineOrder>(&fact.node->what); order && line.is(order->lines[fact.lines])) {
            ++fact.lines;
            if (fact.lines == order->lines.size())
                fact.value = true;
        }
    }
}

void Evaluation::add_sight(const Sight& sight)
{
    pass(sight.at);
    sight_ = sight;
}

void Evaluation::pass(std::int64_t at)
{
    // What lasts no time, is not seen.
    if (sight_ && at > sight_->at)
        judge(at, false);
}

void Evaluation::judge(std::int64_t until, bool ended)
{
    if (sight_->open && !opened_)
        opened_ = sight_->at;
    for (Fact& fact : facts_)
        if (!fact.value && std::holds_alternative<AtTime>(fact.node->what))
            judge(fact, until, ended);
}

void Evaluation::judge(Fact& fact, std::int64_t until, bool ended)
{
    const auto& time = std::get<AtTime>(fact.node->what);
    const std::int64_t given = to_microseconds(time.seconds);
    const bool shown = shows(fact.node->parts.front(), *sight_);
    if (!shown)
        fact.since.reset();
    else if (!fact.since)
        fact.since = sight_->at;
    switch (time.when) {
    case AtTime::When::Sometime:
        if (shown)
            fact.value = true;
        else if (ended)
            fact.value = false;
        break;
    case AtTime::When::End:
        if (ended)
            fact.value = shown;
        break;
    case AtTime::When::At:
        if (given < until || (ended && given == until))
            fact.value = shown;
        break;
    case AtTime::When::Within:
        if (!opened_)
            break;
        if (shown && sight_->at <= *opened_ + given)
            fact.value = true;
        else if (until > *opened_ + given || (ended && until == *opened_ + given))
            fact.value = false;
        break;
    case AtTime::When::For:
        if (fact.since && until - *fact.since >= given)
            fact.value = true;
        else if (ended)
            fact.value = false;
        break;
    }
}

void Evaluation::end(std::int64_t at, const Summary& summary)
{
    pass(at);
    if (sight_)
        judge(at, true);
    for (Fact& fact : facts_)
        if (!fact.value)
            decide(fact, at, summary);
}

/// Facts about the session as a whole, at its end.
void Evaluation::decide(Fact& fact, std::int64_t at, const Summary& summary) const
{
    if (const auto* count = std::get_if<LineCount>(&fact.node->what)) {
        fact.value = fact.lines >= count->least && fact.lines <= count->most;
    } else if (std::holds_alternative<LineOrder>(fact.node->what)) {
        fact.value = false;
    } else if (const auto* happened = std::get_if<Happened>(&fact.node->what)) {
        fact.value = in_time(*happened, summary, at);
    } else if (const auto* blocked = std::get_if<ThreadBlocked>(&fact.node->what)) {
        fact.value = summary.blocked > to_microseconds(blocked->seconds);
    } else if (const auto* left = std::get_if<LeftOver>(&fact.node->what)) {
        if (!left->after_close)
            fact.value = left_count(left->what, summary.at_end) > 0;
        else if (summary.after_close)
            fact.value = left_count(left->what, *summary.after_close) > 0;
    }
}

bool Evaluation::shows(const ExpressionNode& node, const Sight& sight) const
{
    const auto part_shows = [&](const ExpressionNode& part) { return shows(part, sight); };
    if (std::holds_alternative<Negation>(node.what))
        return !part_shows(node.parts.front());
    if (std::holds_alternative<Conjunction>(node.what))
        return std::ranges::all_of(node.parts, part_shows);
    if (std::holds_alternative<Disjunction>(node.what))
        return std::ranges::any_of(node.parts, part_shows);
    const auto& fact = std::get<SightFact>(node.what);
    using enum SightFact::What;
    switch (fact.what) {
    case VideoVisible:
        return sight.video;
    case PageVisible:
        return sight.page;
    case OverlayVisible:
        return sight.other_screen;
    case SoundAudible:
        return sight.sound;
    case CloseReachable:
        return sight.open && sight.close;
    case AdOpen:
        return sight.open;
    case ViewCovered:
    case ViewVisible:
    case ViewTouchable:
    case ViewOutside:
    case ViewAbsent:
    case ViewShows:
        break;
    }
    return shows_view(fact, sight);
}

bool Evaluation::shows_view(const SightFact& fact, const Sight& sight) const
{
    const auto view = std::ranges::find(sight.controls, fact.view, &SeenControl::name);
    using enum SightFact::What;
    if (view == sight.controls.end())
        return fact.what == ViewAbsent;
    const bool has_area = area(view->frame) > 0;
    const bool is_outside = area(on_screen(view->frame, screen_)) <= 0;
    switch (fact.what) {
    case ViewVisible:
        return view->visible.has_value();
    case ViewTouchable:
        return view->is_button && view->touchable.has_value();
    case ViewOutside:
        return has_area && is_outside;
    case ViewCovered:
        return has_area && !is_outside && !(view->is_button ? view->touchable.has_value() : view->visible.has_value());
    case ViewShows:
        return view->visible && fact.text.matches(view->text);
    default:
        return false;
    }
}

std::optional<bool> Evaluation::value() const
{
    std::size_t next = 0;
    return value_of(expression_, next);
}

/// Every part is visited, so that the facts keep their order.
std::optional<bool> Evaluation::value_of(const ExpressionNode& node, std::size_t& next) const
{
    if (std::holds_alternative<Negation>(node.what)) {
        const auto value = value_of(node.parts.front(), next);
        return value ? std::optional(!*value) : std::nullopt;
    }
    const bool is_conjunction = std::holds_alternative<Conjunction>(node.what);
    if (!is_conjunction && !std::holds_alternative<Disjunction>(node.what))
        return facts_[next++].value;
    // One false part decides a conjunction, one true part a disjunction; an unknown part leaves it open.
    std::optional<bool> all = is_conjunction;
    bool is_decided = false;
    for (const ExpressionNode& part : node.parts) {
        const auto value = value_of(part, next);
        if (value == !is_conjunction)
            is_decided = true;
        else if (!value)
            all.reset();
    }
    return is_decided ? std::optional(!is_conjunction) : all;
}

} // namespace qoro
