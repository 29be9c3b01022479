#include "workbench/studio/StudioPage.h"

#include "workbench/report/Page.h"
#include "workbench/studio/StudioTemplate.h"

namespace qoro
{

std::string studio_page(const std::string& title, const std::string& data)
{
    return page_of(
        title, data,
        {.scripts = {{studio_events_js(), QORO_STUDIO_EVENTS_JS_SHA256}, {studio_js(), QORO_STUDIO_JS_SHA256}},
         .styles = {{studio_css(), QORO_STUDIO_CSS_SHA256}},
         .html = studio_html(),
         .policy = "; connect-src 'self'"});
}

} // namespace qoro
