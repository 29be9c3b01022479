#pragma once

#include <string>

typedef struct _SoupServer SoupServer;

namespace qoro
{

/// Where a server listens.
struct Listening {
    /// "127.0.0.1:41327"; empty after a failure.
    std::string host;
    /// Why it does not listen; empty if it does.
    std::string error;
};

/// Makes a server listen on 127.0.0.1, at a free port.
Listening listen_on_loopback(SoupServer* server);

} // namespace qoro
