#include "workbench/explore/Invariants.h"

#include "formats/Fields.h"
#include "workbench/check/OtherLayout.h"
#include "workbench/check/RuleFunctions.h"
#include "workbench/detail/Parallel.h"
#include "workbench/explore/Novelty.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace qoro
{

namespace
{

constexpr auto Exemptions = std::to_array<CourseExemption>({
    {"closing-is-searched", "close-never and close-late: the search proves traps and measures every close itself"},
    {"worth-knowing", "Rules of the severity note are no invariants"},
    {"broken-surroundings",
     "After a fault of the video, the page or the network, an empty screen and a tracker that is "
     "late or never sent only repeat the fault"},
    {"page-answers-in-time",
     "A page whose text can close the ad closes it when its listener is called; the search gives "
     "that command as a move of its own, so touches before it are not ignored"},
});

/// Whether the ad's video, page or network fails in a course.
bool has_broken_surroundings(const FoundCourse& course)
{
    return course.start != 0 || std::ranges::any_of(course.moves, [](const TimedMove& each) {
               switch (each.move.kind) {
               case Move::Kind::PageFault:
               case Move::Kind::ShortStall:
               case Move::Kind::EndlessStall:
               case Move::Kind::Error:
               case Move::Kind::Broken:
               case Move::Kind::Exit:
                   return true;
               default:
                   return false;
               }
           });
}

/// Asks the rules in courses of a search.
class Invariants
{
public:
    Invariants(const SearchSetup& setup, const SearchOptions& options)
        : setup_(setup), options_(options), judged_{.when = "",
                                                    .scenario = setup.texts.front(),
                                                    .models = {},
                                                    .policy_seconds = options.policy_seconds}
    {
        const auto page = CheckedSession(judged_).page();
        page_closes_ = !page || page_can_close(*page);
        for (const Rule& rule : rules())
            if (rule.of_session && rule.severity != Severity::Note && rule.of_session != close_never &&
                rule.of_session != close_late)
                asked_.push_back(&rule);
    }

    /// Adds a finding for each rule that is violated.
    void ask(SearchResult& result)
    {
        constexpr std::size_t BatchSize = 64;
        for (std::span<const FoundCourse> courses = result.new_courses; !courses.empty() && !result.stopped;
             courses = courses.subspan(std::min(courses.size(), BatchSize))) {
            const auto batch = courses.first(std::min(courses.size(), BatchSize));
            std::vector<std::vector<Violation>> violations(batch.size());
            detail::in_parallel(batch.size(), options_.jobs,
                                [&](std::size_t n) { violations[n] = violations_in(batch[n]); });
            for (std::size_t n = 0; n < batch.size(); ++n)
                for (const Violation& each : violations[n])
                    note(batch[n], each, result.findings);
            result.stopped = options_.stop && options_.stop();
        }
    }

private:
    struct Violation {
        const Rule* rule = nullptr;
        Suspicion suspicion;
    };

    bool is_asked(const Rule& rule, const FoundCourse& course) const
    {
        if (rule.of_session == empty_screen || rule.of_session == tracker_never_sent || rule.of_session == tracker_late)
            return !has_broken_surroundings(course);
        if (rule.of_session == close_ignored)
            return !page_closes_;
        return true;
    }

    /// Microseconds after which nothing new happens in a course.
    std::int64_t end_of(const FoundCourse& course) const
    {
        return (course.moves.empty() ? 0 : course.moves.back().at) + setup_.run.patience;
    }

    std::vector<Violation> violations_in(const FoundCourse& course) const
    {
        const CheckedSession session(judged_, scenario_of_course(setup_, course, end_of(course)));
        std::vector<Violation> all;
        for (const Rule* rule : asked_)
            if (is_asked(*rule, course))
                for (Suspicion& each : rule->of_session(session))
                    all.push_back({rule, std::move(each)});
        return all;
    }

    /// What a rule says about a course that ends at a time; absent if it finds nothing of the same kind.
    std::optional<Suspicion> still_in(const FoundCourse& course, std::int64_t until, const Violation& violation) const
    {
        if (!is_asked(*violation.rule, course))
            return std::nullopt;
        const CheckedSession session(judged_, scenario_of_course(setup_, course, until));
        auto all = violation.rule->of_session(session);
        const auto same = std::ranges::find(all, violation.suspicion.key, &Suspicion::key);
        return same == all.end() ? std::nullopt : std::optional(std::move(*same));
    }

    void note(const FoundCourse& course, const Violation& violation, std::vector<SearchFinding>& findings)
    {
        const std::string id(violation.rule->id);
        const auto known = std::ranges::find(findings, id, &SearchFinding::rule);
        if (known != findings.end()) {
            known->others += counted_ == std::pair(id, &course) ? 0 : 1;
            counted_ = {id, &course};
            return;
        }
        std::string cure(violation.rule->cure);
        if (violation.rule->about_layout) {
            const auto better = layout_without_fault(course, violation);
            if (!better)
                return;
            cure = *better;
        }
        findings.push_back(shortest(course, violation));
        findings.back().cure = std::move(cure);
        counted_ = {id, &course};
    }

    /// As layout_without(); tried once for each fault.
    const std::optional<std::string>& layout_without_fault(const FoundCourse& course, const Violation& violation)
    {
        const auto [known, is_new] = layouts_.try_emplace({violation.rule->id, violation.suspicion.key});
        if (is_new)
            known->second =
                layout_without(*violation.rule, judged_, scenario_with_named_taps(course), violation.suspicion);
        return known->second;
    }

    /// In another layout, the controls that are touched are elsewhere.
    ScenarioText scenario_with_named_taps(const FoundCourse& course) const
    {
        constexpr std::string_view Tap = "tap ";
        ScenarioText text = scenario_of_course(setup_, course, end_of(course));
        const std::vector<std::string> buttons = button_names();
        auto move = course.moves.begin();
        for (const std::string& step : text.children("/steps")) {
            if (!text.has(step + "/touch"))
                continue;
            move = std::find_if(move, course.moves.end(),
                                [](const TimedMove& each) { return each.move.kind == Move::Kind::Touch; });
            if (move == course.moves.end())
                break;
            const std::string name = move++->move.name.substr(Tap.size());
            if (std::ranges::find(buttons, name) == buttons.end())
                continue;
            text.remove(step + "/touch");
            text.set(step + "/tap", '"' + name + '"');
        }
        return text;
    }

    /// The finding, with a course of which no move can be left out, and that ends soon after the fault.
    SearchFinding shortest(FoundCourse course, const Violation& violation) const
    {
        constexpr std::int64_t Soon = 3'000'000;
        Suspicion shown = violation.suspicion;
        const auto try_course = [&](const FoundCourse& shorter) {
            auto left = still_in(shorter, end_of(shorter), violation);
            if (!left)
                return false;
            shown = std::move(*left);
            course = shorter;
            return true;
        };
        FoundCourse without = course;
        without.start = 0;
        if (course.start != 0)
            try_course(without);
        for (std::size_t n = course.moves.size(); n-- > 0;) {
            without = course;
            without.moves.erase(without.moves.begin() + static_cast<std::ptrdiff_t>(n));
            try_course(without);
        }
        std::int64_t until = end_of(course);
        const std::int64_t soon =
            std::max(shown.at.value_or(until), course.moves.empty() ? 0 : course.moves.back().at) + Soon;
        if (soon < until)
            if (auto left = still_in(course, soon, violation)) {
                shown = std::move(*left);
                until = soon;
            }
        std::string text = shown.sentence + ".";
        text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
        return {.rule = std::string(violation.rule->id), .text = text, .course = course, .until = until};
    }

    const SearchSetup& setup_;
    const SearchOptions& options_;
    /// What does not differ between the courses.
    const Course judged_;
    bool page_closes_ = false;
    std::vector<const Rule*> asked_;
    std::map<std::pair<std::string_view, std::string>, std::optional<std::string>> layouts_;
    /// The rule and the course that were counted last.
    std::pair<std::string, const FoundCourse*> counted_;
};

} // namespace

std::span<const CourseExemption> course_exemptions()
{
    return Exemptions;
}

void ask_rules(const SearchSetup& setup, const SearchOptions& options, SearchResult& result)
{
    Invariants(setup, options).ask(result);
    sort_findings(result.findings);
}

SearchResult explore_ad(const SearchSetup& setup, const SearchOptions& options)
{
    SearchResult result = search(setup.run, options);
    if (!result.stopped)
        ask_rules(setup, options, result);
    return result;
}

} // namespace qoro
