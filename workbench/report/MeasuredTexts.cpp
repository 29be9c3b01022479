#include "workbench/report/MeasuredTexts.h"

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

void collect(const ViewNode& view, Fonts& fonts)
{
    if (view.text.length() > 0) {
        const ViewNode& label = view.title_label ? *view.title_label : view;
        fonts.try_emplace(view.text.text(), label.font);
    }
    for (const std::shared_ptr<ViewNode>& subview : view.subviews)
        collect(*subview, fonts);
}

} // namespace

void measure_texts(ScenarioText& scenario,
                   const std::function<CGSize(const std::string& text, const FontSpec& font)>& measure)
{
    Fonts fonts;
    record_session(scenario.scenario(), [&fonts](Simulation& simulation) {
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
