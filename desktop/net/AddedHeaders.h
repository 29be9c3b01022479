#pragma once

#include "desktop/glib/Owned.h"
#include "kit/OriginHeaders.h"

#include <memory>
#include <string>
#include <vector>

typedef struct _SoupMessage SoupMessage;

namespace qoro
{

/// While it exists, this program's own requests to these origins carry the host's headers and cookies. A later one
/// replaces it. Requests of pages go through the web engine and carry none. Any thread may use it.
class AddedHeaders
{
public:
    /// @throws std::invalid_argument if they cannot be sent (fault_of)
    explicit AddedHeaders(const std::vector<OriginHeaders>& origins);
    ~AddedHeaders();
    AddedHeaders(const AddedHeaders&) = delete;
    AddedHeaders& operator=(const AddedHeaders&) = delete;

private:
    std::shared_ptr<const void> own_;
};

/// Adds them to one request: each time that it is sent, after a redirect too, those of the origin that it goes to, and
/// no others.
class HeadersOfRequest
{
public:
    /// @param message must not have been sent; the session's cookies are added to it first
    explicit HeadersOfRequest(SoupMessage* message);
    HeadersOfRequest(const HeadersOfRequest&) = delete;
    HeadersOfRequest& operator=(const HeadersOfRequest&) = delete;

private:
    static void starting(SoupMessage* message, HeadersOfRequest* self);

    /// What was added when the request was last sent.
    std::vector<std::string> names_;
    std::string cookies_;
    Connections connections_;
};

} // namespace qoro
