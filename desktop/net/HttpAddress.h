#pragma once

#include <memory>
#include <optional>
#include <string>

typedef struct _GUri GUri;

namespace qoro
{

/// An HTTP or HTTPS address with a host, parsed for libsoup. Checks and requests share the result, so a request
/// connects to the host that was checked. Immutable; copies share the parsed address. Any thread may use it.
class HttpAddress
{
public:
    /// Absent unless the text is an http or https address with a host. Absent also for an address that parsers may read
    /// differently: with a null byte, with a backslash before the query and the fragment, or with "@" or "]" in the
    /// host.
    static std::optional<HttpAddress> parse(std::string address);
    /// The address of one of libsoup's messages or servers; written() is in libsoup's spelling.
    /// @param uri an http or https address with a host; not null; the object keeps a reference
    explicit HttpAddress(GUri* uri);

    /// As it was written.
    const std::string& written() const { return written_; }
    /// In libsoup's spelling: the scheme in lower case, escapes in the host decoded, other escapes in upper case.
    std::string spelt() const;
    /// "example.org:80" or "[::1]:80", in lower case.
    std::string host_and_port() const;
    /// "http://example.org:80", in lower case: the scheme and host_and_port().
    std::string origin() const;
    /// Never null; lives as long as this address or a copy.
    GUri* uri() const { return uri_.get(); }

private:
    HttpAddress(std::string written, std::shared_ptr<GUri> uri);

    std::string written_;
    std::shared_ptr<GUri> uri_;
};

} // namespace qoro
