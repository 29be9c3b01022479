// A page that the ad server serves. The input's first line is the path of the kit's script library.

#include "platform/QoroAdManager.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/support/AdSession.h"

#include <string>

namespace qoro
{

namespace
{

/// The page as the web view receives it.
std::string rewritten(std::string page, const std::string& library)
{
    const std::string head = "<head>";
    if (page.find("mraid.js") != std::string::npos)
        page.replace(page.find(head), head.size(),
                     head + R"(<script type="text/javascript" charset="utf-8" src=")" + library + R"("></script>)");
    return page;
}

} // namespace

void fuzz::run_input(std::string_view input)
{
    const std::size_t line_end = std::min(input.find('\n'), input.size());
    const std::string library(input.substr(0, line_end));
    const std::string page(input.substr(std::min(line_end + 1, input.size())));

    AdSession session;
    session->strMRAID2Expanded = library;
    session.open();
    session.forget();
    session.platform().dispatch(
        [&] { session->didAdRequester({.respData = NSData(page), .strTargetURL = "http://ad/p", .error = {}}); });

    const bool is_text = static_cast<bool>(NSString::with_utf8(page));
    const bool rejected = is_text && page.find("mraid.js") != page.npos && page.find("<head>") == page.npos;
    require(session.lines("fault").size() == (rejected ? 1U : 0U), "a page without a head for the library is rejected");
    if (rejected)
        return;
    require(session.lines("page").size() == 1, "another page is loaded once");
    require(session.lines("page")[0] == (is_text ? rewritten(page, library) : "null") + " http://ad/p",
            "the library stands at the head's begin, the rest as it came");
}

} // namespace qoro
