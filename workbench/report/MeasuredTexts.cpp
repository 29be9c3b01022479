#include "workbench/report/MeasuredTexts.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "simulator/Simulation.h"
#include "views/ViewNode.h"
#include "workbench/SessionRecord.h"
#include "workbench/detail/Json.h"

#include <map>
#include <memory>

namespace qoro
{

namespace
{

using Fonts = std::map<std::string, FontSpec>;

void add(const ViewNode& view, Fonts& fonts)
{
    if (view.text.length() == 0)
        return;
    const ViewNode& label = view.title_label ? *view.title_label : view;
    fonts.try_emplace(view.text.text(), label.font);
}

void collect(const ViewNode& view, Fonts& fonts)
{
    add(view, fonts);
    for (const std::shared_ptr<ViewNode>& subview : view.subviews)
        collect(*subview, fonts);
}

void collect_of_the_ad(Simulation& simulation, Fonts& fonts)
{
    const auto ad = simulation.living();
    if (!ad)
        return;
    for (const auto& node : {ad->btnActionOne.node(), ad->btnActionTwo.node(), ad->labelBrandText.node()})
        if (node)
            add(*node, fonts);
}

} // namespace

void measure_texts(ScenarioText& scenario,
                   const std::function<CGSize(const std::string& text, const FontSpec& font)>& measure,
                   TextsToMeasure which)
{
    Fonts fonts;
    record_session(scenario.scenario(), [&](Simulation& simulation) {
        if (which == TextsToMeasure::OfTheAd) {
            collect_of_the_ad(simulation, fonts);
            return;
        }
        for (const auto& window : simulation.platform().shared<WindowList>().all())
            collect(*window, fonts);
    });
    for (const auto& [text, font] : fonts) {
        const std::string path = path_under("/text", text);
        if (scenario.value(path))
            continue;
        const CGSize size = measure(text, font);
        scenario.set(path, detail::Json::array({size.width, size.height}).dump());
    }
}

} // namespace qoro
