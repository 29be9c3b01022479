#include "workbench/explore/Search.h"

#include "workbench/detail/Parallel.h"
#include "workbench/explore/Graph.h"
#include "workbench/explore/Novelty.h"
#include "workbench/explore/Reach.h"
#include "workbench/explore/SessionStore.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <set>
#include <span>

namespace qoro
{

namespace
{

using Index = CourseGraph::Index;
using Node = CourseGraph::Node;
using Task = CourseGraph::Task;
constexpr Index None = CourseGraph::None;

/// Tasks that run without knowledge of one another. Fixed, so that the result does not depend on the threads.
constexpr std::size_t BatchSize = 128;

std::string seconds_text(std::int64_t microseconds)
{
    std::string text(32, '\0');
    const int length = std::snprintf(text.data(), text.size(), "%.6g s", static_cast<double>(microseconds) / 1e6);
    text.resize(static_cast<std::size_t>(length));
    return text;
}

class Search
{
public:
    Search(const RunSetup& setup, const SearchOptions& options)
        : setup_(setup), options_(options), most_sessions_(options.sessions), began_(std::chrono::steady_clock::now())
    {
    }

    SearchResult run()
    {
        std::vector<Task> tasks{{.start = 0}};
        for (std::size_t depth = 0;; ++depth) {
            // Other surroundings from the start count as a move.
            for (std::size_t start = 1; depth == 1 && start < setup_.starts.size(); ++start)
                tasks.push_back({.start = start});
            if (!perform_level(tasks, depth)) {
                cut_short(depth);
                break;
            }
            result_.complete_depth = depth;
            if (depth == options_.depth)
                break;
            tasks = tasks_of_depth(static_cast<std::uint32_t>(depth), false);
            if (tasks.empty() && depth > 0) {
                nothing_more_ = true;
                break;
            }
        }
        finish();
        return std::move(result_);
    }

private:
    /// Performs the courses of a depth. States are examined for traps once their moves have been explored, which
    /// shows most ways out; a part of the budget is kept for that.
    /// @return false at the end of the budget
    bool perform_level(std::span<const Task> tasks, std::size_t depth)
    {
        while (!tasks.empty() && !ended()) {
            const std::size_t share = (options_.sessions - result_.sessions) * 2 / 3;
            tasks = tasks.subspan(is_shared(depth) ? perform_own(tasks, std::max(share, BatchSize))
                                                   : perform(tasks, std::max(share, BatchSize)));
            if (depth > 0)
                examine(depth - 1);
        }
        if (tasks.empty() && depth == options_.depth)
            examine(depth);
        return tasks.empty();
    }

    bool ended() const
    {
        if (result_.sessions >= most_sessions_ || result_.stopped)
            return true;
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - began_;
        return options_.seconds > 0 && passed.count() >= options_.seconds;
    }

    /// Whether several processes share the courses of a depth.
    bool is_shared(std::size_t depth) const { return options_.shards > 1 && depth == options_.depth && depth > 0; }

    // -------------------------------------------------------------------------------------------------------- tasks

    /// Moves that have not been explored, of the states of a depth.
    std::vector<Task> tasks_of_depth(std::uint32_t depth, bool only_helping) const
    {
        std::vector<Task> tasks;
        for (Index index = 0; index < graph_.nodes().size(); ++index)
            if (graph_.nodes()[index].depth == depth)
                add_tasks(index, only_helping, tasks);
        return tasks;
    }

    void add_tasks(Index index, bool only_helping, std::vector<Task>& tasks) const
    {
        const Node& node = graph_.nodes()[index];
        for (std::size_t move = 0; move < node.moves.size(); ++move)
            if (!node.done[move] && (!only_helping || node.moves[move].helps()))
                tasks.push_back({.node = index, .move = move});
    }

    /// @return how many have been performed: not all at the end of the budget, or of their share
    std::size_t perform(std::span<const Task> tasks, std::size_t most)
    {
        tasks = tasks.first(std::min(tasks.size(), most));
        std::size_t done = 0;
        while (done < tasks.size() && !ended()) {
            const std::size_t count = std::min({BatchSize, tasks.size() - done, options_.sessions - result_.sessions});
            perform_batch(tasks.subspan(done, count));
            done += count;
        }
        return done;
    }

    /// As perform(), where other processes perform the other shards. Their sessions count as well, and the rest of the
    /// budget is divided, so that together they simulate what one search would.
    std::size_t perform_own(std::span<const Task> tasks, std::size_t most)
    {
        most = std::min({most, tasks.size(), most_sessions_ - result_.sessions});
        std::vector<Task> own;
        for (std::size_t n = options_.shard; n < most; n += options_.shards)
            own.push_back(tasks[n]);
        result_.sessions += most - own.size();
        perform(own, own.size());
        const std::size_t rest = options_.sessions - std::min(options_.sessions, result_.sessions);
        if (most == tasks.size())
            most_sessions_ = result_.sessions + rest / options_.shards;
        return most;
    }

    /// Absent for a session that cannot be kept.
    std::optional<StateKey> identity_of(const Task& task) const
    {
        if (!options_.store)
            return std::nullopt;
        if (task.node == None)
            return session_of_beginning(task.start);
        const Node& node = graph_.nodes()[task.node];
        return node.key ? std::optional(session_of_move(*node.key, node.moves[task.move])) : std::nullopt;
    }

    void perform_batch(std::span<const Task> batch)
    {
        std::vector<CourseRun> runs(batch.size());
        std::vector<FoundCourse> courses;
        courses.reserve(batch.size());
        for (const Task& task : batch)
            courses.push_back(graph_.course_of(task));
        std::function<bool(const StateKey&)> known;
        if (options_.recognise)
            known = [this](const StateKey& key) { return graph_.knows(key); };
        std::vector<std::optional<StateKey>> identities;
        identities.reserve(batch.size());
        for (const Task& task : batch)
            identities.push_back(identity_of(task));
        const auto time_of = [&](std::size_t n) { return courses[n].moves.empty() ? 0 : courses[n].moves.back().at; };
        std::vector<std::uint8_t> simulated(batch.size());
        detail::in_parallel(batch.size(), options_.jobs, [&](std::size_t n) {
            if (identities[n])
                if (auto kept = options_.store->find(*identities[n], time_of(n), known)) {
                    runs[n] = std::move(*kept);
                    return;
                }
            runs[n] = run_course(setup_, courses[n].start, courses[n].moves, known);
            simulated[n] = 1;
        });
        for (std::size_t n = 0; n < batch.size(); ++n) {
            result_.simulated += simulated[n];
            if (simulated[n] != 0 && identities[n])
                options_.store->add(*identities[n], time_of(n), runs[n]);
            const CourseGraph::Added added = graph_.add(batch[n], runs[n], options_.recognise);
            graph_.mark(batch[n]);
            ++result_.sessions;
            restless_ += !runs[n].merged && runs[n].moments.size() == MostMoments ? 1 : 0;
            note_signs(courses[n], added.signs, runs[n].moments.front().closed);
            for (const Moment& moment : std::span(runs[n].moments).first(added.moments))
                note_faults(courses[n], moment);
        }
        result_.stopped = result_.stopped || (options_.stop && options_.stop());
    }

    // ------------------------------------------------------------------------------------------------------ findings

    void report(const std::string& rule, const std::string& text, FoundCourse course, std::int64_t until)
    {
        const auto same = std::ranges::find(result_.findings, rule + text,
                                            [](const SearchFinding& each) { return each.rule + each.text; });
        if (same != result_.findings.end())
            ++same->others;
        else
            result_.findings.push_back({rule, text, std::move(course), until});
    }

    void note_signs(const FoundCourse& course, std::span<const Sign> signs, bool closed)
    {
        novelty_.add(course, signs);
        if (closed || course.moves.empty() || course.moves.back().move.kind != Move::Kind::Touch)
            return;
        const std::string& touched = course.moves.back().move.name;
        const auto times =
            std::ranges::count(course.moves, touched, [](const TimedMove& each) { return each.move.name; });
        novelty_.add(course, std::array{sign_of_touches(touched, static_cast<std::size_t>(times))});
    }

    void note_faults(const FoundCourse& course, const Moment& moment)
    {
        const std::int64_t until = moment.at + 1'000'000;
        for (const Fault fault : moment.faults)
            switch (fault) {
            case Fault::SoundAfterClose:
                report("sound-after-close", "A player plays aloud after the ad has closed.", course, until);
                break;
            case Fault::LeftAfterClose:
                report("left-after-close", "A window or an observer is left after the ad has closed.", course, until);
                break;
            case Fault::PlatformFault:
                report("fault", "An operation fails.", course, until);
                break;
            }
    }

    static std::set<std::string> names(const FoundCourse& course)
    {
        std::set<std::string> all;
        for (const TimedMove& each : course.moves)
            all.insert(each.move.name);
        return all;
    }

    /// Whether a trap with fewer moves explains this one.
    SearchFinding* explanation(const FoundCourse& course)
    {
        const auto all = names(course);
        for (SearchFinding& finding : result_.findings)
            if (finding.rule == "trap" && (finding.course.start == 0 || finding.course.start == course.start) &&
                std::ranges::includes(all, names(finding.course)))
                return &finding;
        return nullptr;
    }

    /// Looks for traps among the states of up to a depth.
    void examine(std::size_t depth)
    {
        if (!options_.recognise || !options_.traps)
            return;
        auto out = with_way_out(graph_);
        examined_.resize(graph_.nodes().size());
        for (Index index = 0, count = static_cast<Index>(examined_.size()); index < count; ++index) {
            if (examined_[index] || graph_.nodes()[index].depth > depth)
                continue;
            // Another process examines it.
            if (is_shared(options_.depth) && graph_.nodes()[index].depth < options_.depth &&
                index % options_.shards != options_.shard && depth + 1 >= options_.depth)
                continue;
            if (!out[index]) {
                const FoundCourse course = graph_.course_of(index);
                if (SearchFinding* known = explanation(course))
                    ++known->others;
                else if (!settle(index, course))
                    return;
                else
                    out = with_way_out(graph_);
            }
            examined_[index] = true;
        }
    }

    /// Explores what helps until a way out of a state is found, or nothing is left to explore.
    /// @return false at the end of the budget
    bool settle(Index index, const FoundCourse& course)
    {
        std::size_t left = options_.trap_sessions > 0 ? options_.trap_sessions : options_.sessions / 10;
        while (true) {
            const std::vector<Index> reach = within_reach(graph_, index);
            const auto& nodes = graph_.nodes();
            if (std::ranges::any_of(reach, [&](Index each) { return nodes[each].close || nodes[each].closed; }))
                return true;
            std::vector<Task> tasks;
            for (const Index each : reach)
                add_tasks(each, true, tasks);
            if (tasks.empty() || left == 0) {
                trap(course, reach, tasks.empty());
                examined_.resize(nodes.size());
                for (const Index each : reach)
                    examined_[each] = examined_[each] || tasks.empty();
                return true;
            }
            if (ended())
                return false;
            // A few at a time, nearest first: a way out is mostly near.
            tasks.resize(std::min({tasks.size(), BatchSize / 4, left}));
            left -= tasks.size();
            perform(tasks, tasks.size());
        }
    }

    void trap(const FoundCourse& course, const std::vector<Index>& reach, bool proven)
    {
        std::int64_t until = 0;
        for (const Index each : reach)
            if (graph_.nodes()[each].course == graph_.nodes()[reach.front()].course)
                until = std::max(until, graph_.nodes()[each].at);
        const std::string states = std::to_string(reach.size()) + (reach.size() == 1 ? " state" : " states");
        result_.findings.push_back({.rule = "trap",
                                    .text = proven ? "The viewer can never leave: " + states +
                                                         " follow, and none has a close control that works."
                                                   : "No way out was found: none of the " + states +
                                                         " explored has a close control that works, and more follow.",
                                    .course = course,
                                    .until = until});
    }

    // ----------------------------------------------------------------------------------------------------- the end

    void finish()
    {
        const auto& nodes = graph_.nodes();
        const auto wait = waits(graph_);
        const auto late = static_cast<std::int64_t>(options_.policy_seconds * 1e6);
        std::optional<SearchFinding> first_late;
        std::size_t late_courses = 0;
        const auto consider = [&](std::int64_t reached, const auto& course_of) {
            if (!result_.worst_close || reached > *result_.worst_close) {
                result_.worst_close = reached;
                result_.worst_course = course_of();
            }
            if (reached <= late)
                return;
            ++late_courses;
            FoundCourse course = course_of();
            if (!first_late || course.moves.size() < first_late->course.moves.size())
                first_late = SearchFinding{"close-late",
                                           "A close is reachable only after " + seconds_text(reached) +
                                               ", later than " + seconds_text(late) + ".",
                                           std::move(course), reached};
        };
        for (Index index = 0; index < nodes.size(); ++index) {
            const bool begins = index == 0 || nodes[index].course != nodes[index - 1].course;
            if (begins && wait[index] && !nodes[index].had_close)
                consider(nodes[index].at + *wait[index], [&] { return graph_.course_of(index); });
        }
        for (const CourseGraph::Arrival& arrival : graph_.arrivals())
            if (!arrival.had_close && wait[arrival.node])
                consider(arrival.at + *wait[arrival.node], [&] { return graph_.course_of(arrival.task); });
        if (first_late) {
            first_late->others = late_courses - 1;
            result_.findings.push_back(std::move(*first_late));
        }
        sort_findings(result_.findings);
        result_.next_sessions = tasks_of_depth(static_cast<std::uint32_t>(result_.complete_depth), false).size();
        result_.new_courses = novelty_.courses();
        result_.states = nodes.size();
        result_.merged = graph_.arrivals().size();
        result_.unnamed = graph_.unnamed();
        verify();
        const auto out = with_way_out(graph_);
        std::size_t unexamined = 0;
        for (Index index = 0; options_.recognise && options_.traps && index < nodes.size(); ++index)
            if (!out[index] && nodes[index].depth <= options_.depth && (index >= examined_.size() || !examined_[index]))
                ++unexamined;
        if (unexamined > 0)
            result_.not_covered.push_back("whether the viewer can leave from " + std::to_string(unexamined) +
                                          " states");
        if (!nothing_more_ && result_.complete_depth == options_.depth)
            result_.not_covered.push_back("courses of more than " + std::to_string(options_.depth) +
                                          (options_.depth == 1 ? " move" : " moves"));
        if (restless_ > 0)
            result_.not_covered.push_back("what follows in " + std::to_string(restless_) + " sessions that never end");
        for (const std::string& each : setup_.page.missing)
            result_.not_covered.push_back(each);
        result_.not_covered.emplace_back(
            "moves at times at which nothing changes; the volume keys; the upside-down turn");
        result_.not_covered.emplace_back("answers of trackers and icons that are late or fail");
    }

    void cut_short(std::size_t depth)
    {
        std::size_t left = 0;
        for (const Node& node : graph_.nodes())
            if (node.depth < options_.depth)
                left += static_cast<std::size_t>(std::ranges::count(node.done, false));
        result_.not_covered.push_back("the budget ended among the courses of " + std::to_string(depth) + " moves: " +
                                      std::to_string(left) + " moves in the states found were not explored");
    }

    /// Explores merged states again: evenly spaced ones, so that the sample is the same every time.
    void verify()
    {
        const auto& arrivals = graph_.arrivals();
        const std::size_t count = std::min(options_.verify, arrivals.size());
        for (std::size_t n = 0; n < count; ++n) {
            const CourseGraph::Arrival& arrival = arrivals[n * arrivals.size() / count];
            const Node& node = graph_.nodes()[arrival.node];
            ++result_.verified;
            if (auto wrong = compare_futures(setup_, graph_.course_of(arrival.node), node.at,
                                             graph_.course_of(arrival.task), arrival.at, node.moves))
                result_.wrong_merges.push_back(std::move(*wrong));
        }
    }

    const RunSetup& setup_;
    const SearchOptions& options_;
    /// Of this process.
    std::size_t most_sessions_;
    const std::chrono::steady_clock::time_point began_;
    CourseGraph graph_;
    Novelty novelty_;
    SearchResult result_;
    /// Whether each state has been examined for a trap; shorter than the list of states.
    std::vector<bool> examined_;
    bool nothing_more_ = false;
    /// Sessions that have the most moments.
    std::size_t restless_ = 0;
};

} // namespace

SearchResult search(const RunSetup& setup, const SearchOptions& options)
{
    RunSetup own = setup;
    own.identify = options.recognise;
    own.leave_out = options.leave_out;
    return Search(own, options).run();
}

void sort_findings(std::vector<SearchFinding>& findings)
{
    std::ranges::stable_sort(findings, {}, [](const SearchFinding& each) {
        return std::pair(each.rule != "trap", each.course.moves.size());
    });
}

std::string in_words(const RunSetup& setup, const FoundCourse& course)
{
    std::string words = course.start == 0 ? "" : setup.start_names[course.start];
    for (const TimedMove& each : course.moves)
        words += (words.empty() ? "" : ", ") + each.move.name + " at " + seconds_text(each.at);
    return words.empty() ? "nothing is done" : words;
}

} // namespace qoro
