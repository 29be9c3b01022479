#include "desktop/net/AddedHeaders.h"

#include "desktop/net/HttpAddress.h"

#include <libsoup/soup.h>

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string_view>

namespace qoro
{

namespace
{

/// By origin, as HttpAddress::origin() spells it.
using ByOrigin = std::map<std::string, OriginHeaders>;

std::mutex mutex;
// Guarded by the mutex; null without AddedHeaders.
std::shared_ptr<const ByOrigin> current;

std::shared_ptr<const ByOrigin> added()
{
    const std::scoped_lock lock(mutex);
    return current;
}

/// Whether a Cookie header has a cookie of a name.
bool has_cookie(std::string_view header, std::string_view name)
{
    while (!header.empty()) {
        const std::string_view pair = header.substr(0, header.find(';'));
        if (pair.substr(0, pair.find('=')) == name)
            return true;
        header.remove_prefix(std::min(header.size(), pair.size() + 1));
        header.remove_prefix(std::min(header.size(), header.find_first_not_of(' ')));
    }
    return false;
}

} // namespace

AddedHeaders::AddedHeaders(const std::vector<OriginHeaders>& origins)
{
    auto by_origin = std::make_shared<ByOrigin>();
    for (const OriginHeaders& each : origins) {
        const auto address = HttpAddress::parse(each.origin);
        const std::string fault = fault_of(each);
        if (!fault.empty() || !address)
            throw std::invalid_argument(fault.empty() ? "expected an origin, got \"" + each.origin + "\"" : fault);
        OriginHeaders& all = (*by_origin)[address->origin()];
        all.headers.insert(all.headers.end(), each.headers.begin(), each.headers.end());
        all.cookies.insert(all.cookies.end(), each.cookies.begin(), each.cookies.end());
    }
    own_ = by_origin;
    const std::scoped_lock lock(mutex);
    current = std::move(by_origin);
}

AddedHeaders::~AddedHeaders()
{
    const std::scoped_lock lock(mutex);
    if (current == own_)
        current.reset();
}

HeadersOfRequest::HeadersOfRequest(SoupMessage* message)
{
    // After the handlers of the session's cookie jar, which replaces the header.
    connections_.add_after(message, "starting", starting, this);
}

void HeadersOfRequest::starting(SoupMessage* message, HeadersOfRequest* self)
{
    SoupMessageHeaders* headers = soup_message_get_request_headers(message);
    for (const std::string& name : self->names_)
        soup_message_headers_remove(headers, name.c_str());
    self->names_.clear();
    const char* there = soup_message_headers_get_list(headers, "Cookie");
    std::string cookies = there ? there : "";
    if (!self->cookies_.empty() && cookies == self->cookies_) { // ours; there is no jar
        soup_message_headers_remove(headers, "Cookie");
        cookies.clear();
    }
    self->cookies_.clear();

    const std::shared_ptr<const ByOrigin> by_origin = added();
    if (!by_origin || by_origin->empty())
        return;
    const auto found = by_origin->find(HttpAddress(soup_message_get_uri(message)).origin());
    if (found == by_origin->end())
        return;
    for (const auto& [name, value] : found->second.headers) {
        soup_message_headers_append(headers, name.c_str(), value.c_str());
        self->names_.push_back(name);
    }
    const std::string of_jar = cookies;
    for (const auto& [name, value] : found->second.cookies)
        if (!has_cookie(of_jar, name))
            cookies += (cookies.empty() ? "" : "; ") + name + "=" + value;
    if (cookies == of_jar)
        return;
    soup_message_headers_replace(headers, "Cookie", cookies.c_str());
    self->cookies_ = std::move(cookies);
}

} // namespace qoro
