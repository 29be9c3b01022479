#include "workbench/expression/Expression.h"

#include "formats/Fields.h"
#include "formats/InputError.h"
#include "platform/Events.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <span>
#include <type_traits>
#include <utility>

namespace qoro
{

namespace
{

/// More would endanger the stack.
constexpr std::size_t DeepestNesting = 100;
constexpr double LongestTime = 1e9;

template <std::size_t... I>
void add_kinds(std::vector<std::string_view>& kinds, std::index_sequence<I...>)
{
    const auto add = [&](std::string_view kind) {
        if (!kind.empty() && std::ranges::find(kinds, kind) == kinds.end())
            kinds.push_back(kind);
    };
    (add(std::variant_alternative_t<I, Event>::table.what), ...);
}

/// The kinds of trace lines.
std::vector<std::string_view> line_kinds()
{
    std::vector<std::string_view> kinds;
    add_kinds(kinds, std::make_index_sequence<std::variant_size_v<Event>>());
    return kinds;
}

/// The views that a Sight can have.
std::vector<std::string> seen_views()
{
    std::vector<std::string> names = button_names();
    names.insert(names.end(), {"labelRemainderTime", "labelBrandText", "countDownView"});
    return names;
}

template <typename Names>
std::string list_of(const Names& names)
{
    std::string list;
    for (const auto& name : names)
        (list += list.empty() ? "" : ", ") += name;
    return list;
}

bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool ends_word(char c)
{
    return is_blank(c) || c == '(' || c == ')' || c == '"' || c == '\'' || c == '=' || c == '!' || c == '<' || c == '>';
}

/// A whole text as a number; absent for any other text.
std::optional<double> number_in(std::string_view text)
{
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

template <typename What>
struct Words {
    std::string_view first;
    std::string_view second;
    What what;
};
template <typename What>
Words(std::string_view, std::string_view, What) -> Words<What>;

constexpr std::array SightWords{
    Words{"video", "visible", SightFact::What::VideoVisible},
    Words{"page", "visible", SightFact::What::PageVisible},
    Words{"overlay", "visible", SightFact::What::OverlayVisible},
    Words{"sound", "audible", SightFact::What::SoundAudible},
    Words{"close", "reachable", SightFact::What::CloseReachable},
    Words{"ad", "open", SightFact::What::AdOpen},
};
constexpr std::array ViewWords{
    Words{"view", "covered", SightFact::What::ViewCovered},     Words{"view", "visible", SightFact::What::ViewVisible},
    Words{"view", "touchable", SightFact::What::ViewTouchable}, Words{"view", "outside", SightFact::What::ViewOutside},
    Words{"view", "absent", SightFact::What::ViewAbsent},       Words{"view", "shows", SightFact::What::ViewShows},
};
constexpr std::array HappenedWords{
    Words{"ad", "opened", Happened::What::AdOpened},
    Words{"ad", "closed", Happened::What::AdClosed},
    Words{"controller", "released", Happened::What::ControllerReleased},
    Words{"controller", "destroyed", Happened::What::ControllerDestroyed},
};
constexpr std::array LeftWords{
    Words{"timers", "left", LeftOver::What::Timers},     Words{"observers", "left", LeftOver::What::Observers},
    Words{"windows", "left", LeftOver::What::Windows},   Words{"listeners", "left", LeftOver::What::Listeners},
    Words{"requests", "left", LeftOver::What::Requests}, Words{"controller", "left", LeftOver::What::Controller},
};

bool is_about_a_moment(const ExpressionNode& node)
{
    if (std::holds_alternative<SightFact>(node.what))
        return true;
    return (std::holds_alternative<Negation>(node.what) || std::holds_alternative<Conjunction>(node.what) ||
            std::holds_alternative<Disjunction>(node.what)) &&
           std::ranges::all_of(node.parts, is_about_a_moment);
}

/// A fact about a moment without a time is one about any moment.
ExpressionNode with_times(ExpressionNode node)
{
    if (std::holds_alternative<SightFact>(node.what))
        return {.what = AtTime{}, .parts = {std::move(node)}};
    if (!std::holds_alternative<AtTime>(node.what))
        for (ExpressionNode& part : node.parts)
            part = with_times(std::move(part));
    return node;
}

class ExpressionParser
{
public:
    ExpressionParser(std::string_view text, const std::string& name) : text_(text), name_(name) {}

    ExpressionNode whole()
    {
        ExpressionNode node = disjunction();
        if (!at_end())
            fail("expected and, or, or the end");
        return with_times(std::move(node));
    }

private:
    // ---------------------------------------------------------------------------------------------------- words

    void skip_blanks()
    {
        while (at_ < text_.size() && is_blank(text_[at_]))
            ++at_;
    }
    bool at_end()
    {
        skip_blanks();
        return at_ == text_.size();
    }
    /// The next word, up to a blank, a parenthesis, a quote or an operator; may be empty.
    std::string_view next_word()
    {
        skip_blanks();
        std::size_t end = at_;
        while (end < text_.size() && !ends_word(text_[end]))
            ++end;
        return text_.substr(at_, end - at_);
    }
    bool accept(std::string_view word)
    {
        if (next_word() != word)
            return false;
        at_ += word.size();
        return true;
    }
    bool accept_sign(char sign)
    {
        skip_blanks();
        if (at_ == text_.size() || text_[at_] != sign)
            return false;
        ++at_;
        return true;
    }
    void expect(std::string_view word)
    {
        if (!accept(word))
            fail("expected " + std::string(word));
    }
    /// @param what with an article: "a number of seconds"
    double number(const std::string& what)
    {
        const std::string_view word = next_word();
        const auto found = number_in(word);
        if (!found || !(*found >= 0 && *found <= LongestTime))
            fail("expected " + what);
        at_ += word.size();
        return *found;
    }
    std::size_t count()
    {
        const std::string_view word = next_word();
        std::size_t found = 0;
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), found);
        if (word.empty() || error != std::errc() || end != word.data() + word.size())
            fail("expected a whole number of lines");
        at_ += word.size();
        if (!accept("times") && !accept("time"))
            fail("expected times");
        return found;
    }

    /// Complains about what comes next.
    [[noreturn]] void fail(const std::string& complaint)
    {
        std::string got = "the end";
        if (!at_end()) {
            const std::string_view word = next_word();
            // At least one character, and all of its bytes.
            std::size_t length = std::max<std::size_t>(word.size(), 1);
            while (at_ + length < text_.size() && (static_cast<unsigned char>(text_[at_ + length]) & 0xC0) == 0x80)
                ++length;
            got = '"' + std::string(text_.substr(at_, length)) + '"';
        }
        fail_at(at_, complaint + ", got " + got);
    }
    [[noreturn]] void fail_at(std::size_t place, const std::string& complaint) const
    {
        const auto is_start = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
        const auto column = std::ranges::count_if(text_.substr(0, place), is_start) + 1;
        throw InputError(name_, "column " + std::to_string(column), complaint);
    }

    // ----------------------------------------------------------------------------------------------- connections

    ExpressionNode disjunction()
    {
        ExpressionNode node = conjunction();
        if (next_word() != "or")
            return node;
        ExpressionNode all{.what = Disjunction{}};
        all.parts.push_back(std::move(node));
        while (accept("or"))
            all.parts.push_back(conjunction());
        return all;
    }

    ExpressionNode conjunction()
    {
        ExpressionNode node = fact();
        if (next_word() != "and")
            return node;
        ExpressionNode all{.what = Conjunction{}};
        all.parts.push_back(std::move(node));
        while (accept("and"))
            all.parts.push_back(fact());
        return all;
    }

    ExpressionNode fact()
    {
        skip_blanks();
        if (depth_ == DeepestNesting)
            fail_at(at_, "expected at most " + std::to_string(DeepestNesting) + " levels");
        ++depth_;
        ExpressionNode node = fact_at_depth();
        --depth_;
        return node;
    }

    ExpressionNode fact_at_depth()
    {
        if (accept("not")) {
            ExpressionNode node{.what = Negation{}};
            node.parts.push_back(fact());
            return node;
        }
        if (accept_sign('(')) {
            ExpressionNode node = disjunction();
            if (!accept_sign(')'))
                fail("expected and, or, or )");
            return with_time(std::move(node));
        }
        if (accept("line"))
            return lines();
        if (accept("view"))
            return with_time({.what = view()});
        if (accept("main")) {
            expect("thread");
            expect("blocked");
            const bool is_timed = accept("for");
            return {.what = ThreadBlocked{is_timed ? number("a number of seconds") : 0}};
        }
        return two_words();
    }

    // ------------------------------------------------------------------------------------------------ the session

    /// Facts that two words name.
    ExpressionNode two_words()
    {
        const std::string first(next_word());
        const std::size_t before = at_;
        at_ += first.size();
        const std::string second(next_word());
        const auto is_it = [&](const auto& words) { return words.first == first && words.second == second; };
        std::vector<std::string_view> seconds;
        const auto add_seconds = [&](const auto& table) {
            for (const auto& words : table)
                if (words.first == first)
                    seconds.push_back(words.second);
        };
        if (const auto* found = std::ranges::find_if(SightWords, is_it); found != SightWords.end()) {
            at_ += second.size();
            return with_time({.what = SightFact{.what = found->what}});
        }
        if (const auto* found = std::ranges::find_if(HappenedWords, is_it); found != HappenedWords.end()) {
            at_ += second.size();
            Happened happened{.what = found->what};
            if (found->what != Happened::What::AdOpened && accept("within")) {
                happened.is_timed = true;
                happened.within = number("a number of seconds");
            }
            return {.what = happened};
        }
        if (const auto* found = std::ranges::find_if(LeftWords, is_it); found != LeftWords.end()) {
            at_ += second.size();
            return {.what = LeftOver{.what = found->what, .after_close = after_close()}};
        }
        add_seconds(SightWords);
        add_seconds(HappenedWords);
        add_seconds(LeftWords);
        if (seconds.empty()) {
            at_ = before;
            fail("expected not, (, line, view, video, page, overlay, sound, close, ad, controller, timers, observers, "
                 "windows, listeners, requests or main");
        }
        fail("expected " + (seconds.size() == 1 ? "" : std::string("one of ")) + list_of(seconds) + " after " + first);
    }

    bool after_close()
    {
        if (accept("after")) {
            expect("close");
            return true;
        }
        if (accept("at")) {
            accept("the");
            expect("end");
        }
        return false;
    }

    SightFact view()
    {
        const std::string_view name = next_word();
        const std::vector<std::string> known = seen_views();
        if (std::ranges::find(known, name) == known.end())
            fail("expected a view: one of " + list_of(known));
        at_ += name.size();
        const std::string_view state = next_word();
        const auto* found = std::ranges::find(ViewWords, state, &Words<SightFact::What>::second);
        if (found == ViewWords.end())
            fail("expected covered, visible, touchable, outside, absent or shows");
        at_ += state.size();
        SightFact fact{.what = found->what, .view = std::string(name)};
        if (fact.what == SightFact::What::ViewShows)
            fact.text = pattern().text;
        return fact;
    }

    ExpressionNode with_time(ExpressionNode node)
    {
        skip_blanks();
        const std::size_t place = at_;
        AtTime time;
        if (accept("at")) {
            const bool has_article = accept("the");
            if (accept("end")) {
                time.when = AtTime::When::End;
            } else {
                if (has_article)
                    fail("expected end");
                time.when = AtTime::When::At;
                time.seconds = number("end, or a number of seconds");
            }
        } else if (accept("within")) {
            time = {AtTime::When::Within, number("a number of seconds")};
        } else if (accept("for")) {
            time = {AtTime::When::For, number("a number of seconds")};
        } else if (!accept("sometime")) {
            return node;
        }
        if (!is_about_a_moment(node))
            fail_at(place,
                    "a time applies to what the viewer sees and hears; expected nothing else, and no other time, "
                    "in the parentheses");
        ExpressionNode timed{.what = time};
        timed.parts.push_back(std::move(node));
        return timed;
    }

    // -------------------------------------------------------------------------------------------------- the trace

    ExpressionNode lines()
    {
        LinePattern first = line();
        if (next_word() == "before") {
            LineOrder order;
            order.lines.push_back(std::move(first));
            while (accept("before")) {
                expect("line");
                order.lines.push_back(line());
            }
            return {.what = std::move(order)};
        }
        LineCount fact{.line = std::move(first)};
        if (accept("never"))
            fact.least = fact.most = 0;
        else if (accept("once"))
            fact.least = fact.most = 1;
        else if (accept("twice"))
            fact.least = fact.most = 2;
        else if (accept("at")) {
            if (accept("least")) {
                fact.least = count();
            } else if (accept("most")) {
                fact.least = 0;
                fact.most = count();
            } else {
                fail("expected least or most");
            }
        } else if (number_in(next_word())) {
            fact.least = fact.most = count();
        }
        return {.what = std::move(fact)};
    }

    LinePattern line()
    {
        const std::string_view kind = next_word();
        const std::vector<std::string_view> known = line_kinds();
        if (kind != "*" && std::ranges::find(known, kind) == known.end())
            fail("expected a kind of trace line: * or one of " + list_of(known));
        at_ += kind.size();
        LinePattern line{.what = std::string(kind)};
        while (is_condition())
            line.conditions.push_back(condition());
        return line;
    }

    /// Whether a word and an operator come next.
    bool is_condition()
    {
        const std::string_view key = next_word();
        std::size_t after = at_ + key.size();
        while (after < text_.size() && is_blank(text_[after]))
            ++after;
        return !key.empty() && after < text_.size() && std::string_view("=!<>").find(text_[after]) != std::string::npos;
    }

    LineCondition condition()
    {
        LineCondition condition;
        const std::string_view key = next_word();
        for (std::size_t begin = 0; begin <= key.size();) {
            const std::size_t end = std::min(key.find('.', begin), key.size());
            condition.path.emplace_back(key.substr(begin, end - begin));
            begin = end + 1;
        }
        at_ += key.size();
        const LineCondition::Comparison comparison = operation();
        const std::size_t place = at_;
        LineCondition value = pattern();
        value.path = std::move(condition.path);
        value.comparison = comparison;
        if (comparison != LineCondition::Comparison::Equal && comparison != LineCondition::Comparison::Unequal &&
            !value.is_number) {
            at_ = place;
            fail("expected a number");
        }
        return value;
    }

    LineCondition::Comparison operation()
    {
        using Comparison = LineCondition::Comparison;
        if (accept_sign('='))
            return Comparison::Equal;
        if (accept_sign('<'))
            return accept_equals() ? Comparison::AtMost : Comparison::Less;
        if (accept_sign('>'))
            return accept_equals() ? Comparison::AtLeast : Comparison::Greater;
        accept_sign('!');
        if (!accept_equals())
            fail("expected = after !");
        return Comparison::Unequal;
    }
    bool accept_equals()
    {
        if (at_ == text_.size() || text_[at_] != '=')
            return false;
        ++at_;
        return true;
    }

    /// A value: in quotes, or up to a blank or a parenthesis.
    LineCondition pattern()
    {
        skip_blanks();
        LineCondition value;
        if (at_ < text_.size() && (text_[at_] == '"' || text_[at_] == '\'')) {
            value.text = quoted();
            return value;
        }
        std::size_t end = at_;
        while (end < text_.size() && !is_blank(text_[end]) && text_[end] != '(' && text_[end] != ')')
            ++end;
        const std::string_view word = text_.substr(at_, end - at_);
        if (word.empty())
            fail("expected a value");
        at_ = end;
        value.text.parts.emplace_back();
        for (const char c : word)
            if (c == '*')
                value.text.parts.emplace_back();
            else
                value.text.parts.back() += c;
        value.null = word == "null";
        const auto number = number_in(word);
        value.is_number = number.has_value();
        value.number = number.value_or(0);
        return value;
    }

    TextPattern quoted()
    {
        const std::size_t begin = at_;
        const char quote = text_[at_++];
        TextPattern pattern{.parts = {""}};
        for (;; ++at_) {
            if (at_ == text_.size())
                fail_at(begin, std::string("expected the text to end with ") + quote);
            const char c = text_[at_];
            if (c == quote)
                break;
            if (c == '*') {
                pattern.parts.emplace_back();
                continue;
            }
            if (c == '\\') {
                ++at_;
                if (at_ == text_.size() || std::string_view("\\\"'*").find(text_[at_]) == std::string_view::npos)
                    fail_at(at_ - 1, "expected \\\\, \\\", \\' or \\*");
            }
            pattern.parts.back() += text_[at_];
        }
        ++at_;
        return pattern;
    }

    const std::string_view text_;
    const std::string& name_;
    std::size_t at_ = 0;
    std::size_t depth_ = 0;
};

} // namespace

bool TextPattern::matches(std::string_view text) const
{
    if (parts.empty())
        return text.empty();
    const std::string& first = parts.front();
    if (parts.size() == 1)
        return text == first;
    if (!text.starts_with(first))
        return false;
    std::size_t at = first.size();
    for (std::size_t i = 1; i + 1 < parts.size(); ++i) {
        const std::size_t found = text.find(parts[i], at);
        if (found == std::string_view::npos)
            return false;
        at = found + parts[i].size();
    }
    return text.size() - at >= parts.back().size() && text.ends_with(parts.back());
}

ExpressionNode parse_expression(std::string_view text, const std::string& name)
{
    return ExpressionParser(text, name).whole();
}

} // namespace qoro
