#include "workbench/check/Check.h"

#include "workbench/Shrink.h"
#include "workbench/check/OtherLayout.h"
#include "workbench/check/Rules.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace qoro
{

namespace
{

/// Findings of one rule that are reported; the counterexamples of more would take too long.
constexpr std::ptrdiff_t MostOfARule = 20;

/// Without these an ad is another one.
const std::vector<std::string> Essential{
    "/ad/vast",         "/ad/strVideoUrl",      "/ad/strWebViewUrl",     "/ad/bIsAutoStart",    "/ad/fVideoWidth",
    "/ad/fVideoHeight", "/ad/portraitModeType", "/ad/landscapeModeType", "/ad/portraitVideoPos"};

class Check
{
public:
    Check(const BaseScenario& base, const CheckOptions& options)
        : base_(base), courses_(base, options), severity_(options.severity), devices_(options.devices)
    {
    }

    CheckResult run()
    {
        for (const Rule& rule : rules())
            if (rule.of_ad && rule.severity >= severity_)
                for (const Suspicion& suspicion : rule.of_ad(base_))
                    add(rule, suspicion);
        if (const auto written = courses_.as_written())
            put_through(*written);
        if (const auto watch = courses_.watch()) {
            const CheckedSession watched(*watch);
            ask(watched);
            for (const Course& course : courses_.others(watched))
                put_through(course);
            if (devices_)
                for (const Course& course : courses_.on_devices())
                    put_through(course);
        }
        std::ranges::stable_sort(result_.findings, [](const Finding& one, const Finding& other) {
            return rule_named(one.rule) < rule_named(other.rule);
        });
        return std::move(result_);
    }

private:
    void put_through(const Course& course) { ask(CheckedSession(course)); }

    void ask(const CheckedSession& session)
    {
        ++result_.sessions;
        for (const Rule& rule : rules())
            if (rule.of_session && rule.severity >= severity_)
                for (const Suspicion& suspicion : rule.of_session(session))
                    examine(rule, session, suspicion);
    }

    void examine(const Rule& rule, const CheckedSession& session, const Suspicion& suspicion)
    {
        if (is_known(rule, suspicion))
            return;
        known_.emplace_back(rule.id, suspicion.key);
        if (std::ranges::count(result_.findings, rule.id, &Finding::rule) >= MostOfARule)
            return;
        std::string cure(rule.cure);
        if (rule.about_layout) {
            const auto better =
                base_.kind == InputKind::Tag || !session.ad()
                    ? std::nullopt
                    : layout_without(rule, session.course(), session.text(), suspicion, &result_.sessions);
            if (!better)
                return;
            cure = *better;
        }
        Finding& finding = add(rule, suspicion);
        finding.cure = cure;
        show(finding, rule, session, suspicion);
    }

    bool is_known(const Rule& rule, const Suspicion& suspicion) const
    {
        return std::ranges::find(known_, std::pair(rule.id, suspicion.key)) != known_.end();
    }

    Finding& add(const Rule& rule, const Suspicion& suspicion)
    {
        const std::string path = path_in_file(suspicion.path);
        result_.findings.push_back({.rule = rule.id,
                                    .severity = rule.severity,
                                    .sentence = suspicion.sentence,
                                    .file = base_.file,
                                    .path = path,
                                    .place = place_in(base_, path),
                                    .cure = std::string(rule.cure),
                                    .key = suspicion.key});
        return result_.findings.back();
    }

    /// The place in the file, or the nearest one around it that the file has.
    std::string path_in_file(std::string path) const
    {
        if (base_.kind == InputKind::Tag)
            return path;
        while (!path.empty() && !base_.scenario.value("/ad" + path))
            path.erase(path.rfind('/'));
        return path.empty() ? path : base_.ad_path() + path;
    }

    /// Adds the smallest session that shows a finding, and its moment.
    void show(Finding& finding, const Rule& rule, const CheckedSession& session, const Suspicion& suspicion)
    {
        ShrinkLimits limits{.kept = Essential};
        if (const auto page = session.text().string("/ad/strWebViewUrl"))
            limits.kept.push_back(path_under("/net", *page));
        if (!suspicion.path.empty() && base_.kind != InputKind::Tag)
            limits.kept.push_back("/ad" + suspicion.path);
        finding.at = suspicion.at;
        const ScenarioText smallest = shrink(
            session.text(),
            [&](const ScenarioText& scenario) {
                ++result_.sessions;
                const std::vector<Suspicion> left = rule.of_session(CheckedSession(session.course(), scenario));
                const auto same = std::ranges::find(left, suspicion.sentence, &Suspicion::sentence);
                if (same == left.end())
                    return false;
                // The last scenario that shows it is the smallest.
                finding.at = same->at;
                return true;
            },
            limits);
        finding.counterexample = smallest.text();
    }

    const BaseScenario& base_;
    const Courses courses_;
    const Severity severity_;
    const bool devices_;
    CheckResult result_;
    std::vector<std::pair<std::string_view, std::string>> known_;
};

} // namespace

CheckResult check_ad(const BaseScenario& base, const CheckOptions& options)
{
    return Check(base, options).run();
}

std::vector<std::optional<std::int64_t>> moments_in(const Course& course, std::span<const Finding> findings)
{
    const CheckedSession session(course);
    std::vector<std::optional<std::int64_t>> moments;
    moments.reserve(findings.size());
    for (const Finding& finding : findings) {
        const Rule* rule = rule_named(finding.rule);
        const auto shown = rule->of_session ? rule->of_session(session) : std::vector<Suspicion>();
        const auto same = std::ranges::find(shown, finding.key, &Suspicion::key);
        moments.push_back(same == shown.end() ? std::nullopt : same->at);
    }
    return moments;
}

} // namespace qoro
