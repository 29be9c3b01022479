#include "workbench/Shrink.h"

#include "formats/InputError.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <unordered_set>
#include <utility>

namespace qoro
{

namespace
{

constexpr const char* Steps = "/steps";
constexpr std::int64_t Second = 1'000'000;
/// Pairs of more steps take too many trials.
constexpr std::size_t MostStepsInPairs = 40;
/// A step that only lets time pass.
constexpr const char* IdleStep = R"({"device":{}})";

std::string step_path(std::size_t step)
{
    return Steps + ('/' + std::to_string(step));
}

/// Microseconds as seconds, without needless decimals.
std::string seconds_json(std::int64_t microseconds)
{
    std::string text = std::to_string(microseconds / Second);
    if (const std::int64_t fraction = microseconds % Second; fraction > 0) {
        text += '.' + std::to_string(Second + fraction).substr(1);
        text.erase(text.find_last_not_of('0') + 1);
    }
    return text;
}

std::size_t hash_of(const ScenarioText& scenario)
{
    return std::hash<std::string>()(scenario.text());
}

class Shrinking
{
public:
    Shrinking(ScenarioText scenario, const std::function<bool(const ScenarioText&)>& shows, const ShrinkLimits& limits)
        : best_(std::move(scenario)), shows_(shows), limits_(limits)
    {
    }

    ScenarioText run()
    {
        give_each_step_its_time();
        tried_.insert(hash_of(best_));
        do {
            progress_ = false;
            remove_among(Steps);
            remove_below("");
            simplify_steps();
            empty_bodies();
            shorten();
            if (!progress_)
                remove_pairs_of_steps();
        } while (progress_ && !is_over());
        return std::move(best_);
    }

private:
    bool is_over() const { return trials_ >= limits_.trials; }

    /// Whether a scenario still shows it; if so, it is the best from now on.
    bool accept(ScenarioText candidate)
    {
        if (is_over() || !tried_.insert(hash_of(candidate)).second)
            return false;
        try {
            candidate.scenario();
        } catch (const InputError&) {
            return false;
        }
        ++trials_;
        if (!shows_(candidate))
            return false;
        best_ = std::move(candidate);
        progress_ = true;
        return true;
    }

    /// Whether something at or below a path is kept.
    bool is_kept(const std::string& path) const
    {
        return std::ranges::any_of(limits_.kept, [&](const std::string& kept) {
            return path == kept || kept.starts_with(path + '/') || path.starts_with(kept + '/');
        });
    }

    bool is_within_kept(const std::string& path) const
    {
        return std::ranges::any_of(
            limits_.kept, [&](const std::string& kept) { return path == kept || path.starts_with(kept + '/'); });
    }

    /// So that the removal of a step does not move those behind it.
    void give_each_step_its_time()
    {
        std::string at = "0";
        for (const std::string& step : best_.children(Steps)) {
            if (const auto given = best_.value(step + "/at"))
                at = *given;
            else
                best_.set(step + "/at", at);
        }
    }

    /// Removes the values of an object or a list: halves, quarters, …, single ones; from the back, which moves no other
    /// index.
    void remove_among(const std::string& path)
    {
        const auto removable = [&] {
            std::vector<std::string> parts = best_.children(path);
            std::erase_if(parts, [&](const std::string& part) { return is_kept(part) || is_required(part); });
            return parts;
        };
        std::vector<std::string> parts = removable();
        for (std::size_t length = std::max<std::size_t>(parts.size() / 2, 1); length > 0 && !is_over(); length /= 2) {
            for (std::size_t end = parts.size(); end > 0 && !is_over();) {
                const std::size_t begin = end - std::min(end, length);
                ScenarioText candidate = best_;
                for (std::size_t i = end; i > begin; --i)
                    candidate.remove(parts[i - 1]);
                accept(std::move(candidate));
                end = begin;
            }
            parts = removable();
        }
    }

    /// Without these a scenario is none, or a step has no time.
    static bool is_required(const std::string& path)
    {
        return path == "/ad" || path == Steps || (path.starts_with("/steps/") && path.ends_with("/at"));
    }

    /// The parts of a value, then the parts of those that are left.
    void remove_below(const std::string& path)
    {
        if (is_over() || is_within_kept(path))
            return;
        if (path != Steps)
            remove_among(path);
        std::vector<std::string> parts = best_.children(path);
        std::ranges::reverse(parts);
        for (const std::string& part : parts)
            remove_below(part);
    }

    /// Two steps may only go together, such as two taps on the same button.
    void remove_pairs_of_steps()
    {
        if (best_.steps() > MostStepsInPairs)
            return;
        for (std::size_t last = best_.steps(); last-- > 1;)
            for (std::size_t first = std::min(last, best_.steps()); first-- > 0;) {
                if (last >= best_.steps() || is_kept(step_path(first)) || is_kept(step_path(last)))
                    continue;
                ScenarioText candidate = best_;
                candidate.remove(step_path(last));
                candidate.remove(step_path(first));
                if (accept(std::move(candidate)))
                    break;
            }
    }

    /// Steps that matter only for the time that passes until they come.
    void simplify_steps()
    {
        for (std::size_t i = best_.steps(); i-- > 0;) {
            const std::string path = step_path(i);
            if (is_kept(path) || best_.value(path + "/device"))
                continue;
            ScenarioText candidate = best_;
            const std::string at = best_.value(path + "/at").value_or("0");
            candidate.set(path, IdleStep);
            candidate.set(path + "/at", at);
            accept(std::move(candidate));
        }
    }

    void empty_bodies()
    {
        for (const std::string& answer : best_.children("/net"))
            if (best_.string(answer + "/body").value_or("").size() > 0 && !is_kept(answer)) {
                ScenarioText candidate = best_;
                candidate.set(answer + "/body", R"("")");
                accept(std::move(candidate));
            }
    }

    /// Each step comes as soon as possible after the one before it: with those behind it, then by itself.
    void shorten()
    {
        for (const bool with_others : {true, false})
            for (std::size_t i = 0; i < best_.steps() && !is_over(); ++i)
                shorten_time_before(i, with_others);
    }

    void shorten_time_before(std::size_t step, bool with_others)
    {
        if (is_kept(step_path(step) + "/at"))
            return;
        const std::int64_t before = step > 0 ? time_of(step - 1) : 0;
        std::int64_t wait = time_of(step) - before;
        const auto try_wait = [&](std::int64_t shorter) {
            ScenarioText candidate = best_;
            const std::size_t end = with_others ? best_.steps() : step + 1;
            for (std::size_t i = step; i < end; ++i)
                candidate.set(step_path(i) + "/at", seconds_json(time_of(i) - wait + shorter));
            if (!accept(std::move(candidate)))
                return false;
            wait = shorter;
            return true;
        };
        if (wait <= 0 || try_wait(0))
            return;
        // No time is not enough; the time at hand is.
        std::int64_t least = 0;
        if (const std::int64_t whole = wait / Second * Second; whole < wait && (whole == 0 || !try_wait(whole)))
            return;
        while (wait - least > Second) {
            const std::int64_t middle = least + (wait - least) / 2 / Second * Second;
            if (!try_wait(middle))
                least = middle;
        }
    }

    /// Microseconds.
    std::int64_t time_of(std::size_t step) const
    {
        const auto at = best_.value(step_path(step) + "/at");
        return at ? std::llround(std::strtod(at->c_str(), nullptr) * static_cast<double>(Second)) : 0;
    }

    ScenarioText best_;
    const std::function<bool(const ScenarioText&)>& shows_;
    const ShrinkLimits& limits_;
    /// Hashes of the scenarios that were tried. A collision would only leave out a trial.
    std::unordered_set<std::size_t> tried_;
    std::size_t trials_ = 0;
    bool progress_ = false;
};

} // namespace

ScenarioText shrink(ScenarioText scenario, const std::function<bool(const ScenarioText&)>& shows,
                    const ShrinkLimits& limits)
{
    return Shrinking(std::move(scenario), shows, limits).run();
}

} // namespace qoro
