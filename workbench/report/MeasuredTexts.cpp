#include "workbench/report/MeasuredTexts.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "simulator/Simulation.h"
#include "views/ViewNode.h"
#include "workbench/SessionRecord.h"
#include "workbench/detail/Json.h"

#include <map>
#include <memory>
#include <set>

namespace qoro
{

namespace
{

using Fonts = std::map<std::string, FontSpec>;

void collect(const ViewNode& view, Fonts& fonts)
{
    if (view.text.length() > 0) {
        const ViewNode& label = view.title_label ? *view.title_label : view;
        fonts.try_emplace(view.text.text(), label.font);
    }
    for (const std::shared_ptr<ViewNode>& subview : view.subviews)
        collect(*subview, fonts);
}

/// Adds the texts that the ad itself contains.
void collect_of_the_ad(Simulation& simulation, std::set<std::string>& texts)
{
    const auto ad = simulation.living();
    if (!ad)
        return;
    for (const auto& node : {ad->btnActionOne.node(), ad->btnActionTwo.node(), ad->labelBrandText.node()})
        if (node)
            texts.insert(node->text.text());
}

} // namespace

void measure_texts(ScenarioText& scenario,
                   const std::function<CGSize(const std::string& text, const FontSpec& font)>& measure,
                   TextsToMeasure which)
{
    Fonts fonts;
    std::set<std::string> of_the_ad;
    record_session(scenario.scenario(), [&](Simulation& simulation) {
        // A view has its font when it is on the screen.
        for (const auto& window : simulation.platform().shared<WindowList>().all())
            collect(*window, fonts);
        collect_of_the_ad(simulation, of_the_ad);
    });
    for (const auto& [text, font] : fonts) {
        if (which == TextsToMeasure::OfTheAd && !of_the_ad.contains(text))
            continue;
        const std::string path = path_under("/text", text);
        if (scenario.value(path))
            continue;
        const CGSize size = measure(text, font);
        scenario.set(path, detail::Json::array({size.width, size.height}).dump());
    }
}

} // namespace qoro
