#include "workbench/Shrink.h"

#include "formats/InputError.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace qoro
{

namespace
{

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
        do {
            progress_ = false;
            remove_steps();
            for (const char* part : {"/text", "/net", "/device", "/host", "/video", "/videos"})
                remove_below(part);
            remove_below("/ad");
            empty_bodies();
            shorten();
        } while (progress_ && trials_ < limits_.trials);
        return std::move(best_);
    }

private:
    /// Whether a scenario still shows it; if so, it is the best from now on.
    bool accept(ScenarioText candidate)
    {
        if (trials_ >= limits_.trials || candidate == best_)
            return false;
        ++trials_;
        try {
            candidate.scenario();
        } catch (const InputError&) {
            return false;
        }
        if (!shows_(candidate))
            return false;
        best_ = std::move(candidate);
        progress_ = true;
        return true;
    }

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
        for (const std::string& step : best_.children("/steps")) {
            if (const auto given = best_.value(step + "/at"))
                at = *given;
            else
                best_.set(step + "/at", at);
        }
    }

    /// Halves, quarters, …, single steps; from the back, which moves no other index.
    void remove_steps()
    {
        for (std::size_t length = std::max<std::size_t>(best_.steps() / 2, 1); length > 0; length /= 2)
            for (std::size_t end = best_.steps(); end > 0;) {
                const std::size_t begin = end - std::min(end, length);
                ScenarioText candidate = best_;
                for (std::size_t i = end; i > begin; --i)
                    candidate.remove("/steps/" + std::to_string(i - 1));
                accept(std::move(candidate));
                end = begin;
            }
    }

    /// A value as a whole, otherwise its parts.
    void remove_below(const std::string& path)
    {
        if (!best_.value(path) || trials_ >= limits_.trials || is_within_kept(path))
            return;
        if (!is_kept(path) && path != "/ad") {
            ScenarioText candidate = best_;
            candidate.remove(path);
            if (accept(std::move(candidate)))
                return;
        }
        std::vector<std::string> parts = best_.children(path);
        std::ranges::reverse(parts);
        for (const std::string& part : parts)
            remove_below(part);
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

    /// The last step comes as early as possible, in whole seconds; then the ones before it.
    void shorten()
    {
        for (std::size_t i = best_.steps(); i > 0; --i) {
            const std::string place = "/steps/" + std::to_string(i - 1) + "/at";
            const double least = i > 1 ? time_of(i - 2) : 0;
            double low = std::floor(least);
            double high = std::ceil(time_of(i - 1));
            while (high - low > 1 && trials_ < limits_.trials) {
                const double middle = std::floor((low + high) / 2);
                ScenarioText candidate = best_;
                candidate.set(place, std::to_string(static_cast<long long>(middle)));
                (middle >= least && accept(std::move(candidate)) ? high : low) = middle;
            }
        }
    }

    double time_of(std::size_t step) const
    {
        const auto at = best_.value("/steps/" + std::to_string(step) + "/at");
        return at ? std::strtod(at->c_str(), nullptr) : 0;
    }

    ScenarioText best_;
    const std::function<bool(const ScenarioText&)>& shows_;
    const ShrinkLimits& limits_;
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
