#include "tests/vast/Tags.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace qoro::test
{

void Tags::serve(const std::string& name, const std::string& body, double after)
{
    NetAnswer& answer = world.net["http://ads.example/" + name];
    answer.body = body;
    answer.after = after;
}

template <typename Begin>
vast::Resolution Tags::run(Begin&& begin)
{
    calls = 0;
    requests.clear();
    SimulatedPlatform platform(world);
    vast::ResolverOptions with_requests = options;
    with_requests.requests = [this](const std::string& address) { requests.push_back(address); };
    const vast::CommonMediaSupport support;
    vast::Resolver resolver(platform.fetcher(), platform.loop(), support, with_requests);
    std::optional<vast::Resolution> result;
    begin(resolver, [&](vast::Resolution resolution) {
        ++calls;
        took = platform.loop().now();
        result = std::move(resolution);
    });
    if (calls != 0)
        throw std::logic_error("the resolver called inside the call that began");
    // Longer than any time-out, so that a second call would show.
    platform.run_until(60);
    if (!result)
        throw std::logic_error("the resolver did not call");
    return std::move(*result);
}

vast::Resolution Tags::resolve(const std::string& address)
{
    return run(
        [&](vast::Resolver& resolver, vast::Resolver::Done done) { resolver.resolve(address, std::move(done)); });
}

vast::Resolution Tags::resolve_text(const std::string& text, const std::string& address)
{
    return run([&](vast::Resolver& resolver, vast::Resolver::Done done) {
        resolver.resolve_text(text, address, std::move(done));
    });
}

std::string document_text(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw std::runtime_error("no file " + path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string vast_of(const std::string& ads)
{
    return "<VAST version=\"4.2\">" + ads + "</VAST>";
}

std::string inline_ad(const std::string& id, const std::string& attributes)
{
    return "<Ad id=\"" + id + "\" " + attributes +
           "><InLine><AdSystem>s</AdSystem><AdTitle>t</AdTitle><Impression>http://t.example/" + id +
           "</Impression><Creatives><Creative><Linear><Duration>00:00:10</Duration><MediaFiles><MediaFile "
           "delivery=\"progressive\" type=\"video/mp4\" width=\"640\" height=\"360\">http://cdn.example/v.mp4"
           "</MediaFile></MediaFiles></Linear></Creative></Creatives></InLine></Ad>";
}

std::string wrapper_of(const std::string& address, const std::string& attributes)
{
    return "<Ad " + attributes + "><Wrapper><AdSystem>s</AdSystem><VASTAdTagURI>" + address +
           "</VASTAdTagURI><Impression>http://t.example/w</Impression></Wrapper></Ad>";
}

} // namespace qoro::test
