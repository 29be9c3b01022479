#pragma once

#include "desktop/GlibLoop.h"
#include "desktop/net/SoupFetcher.h"
#include "tests/desktop/net/RawHttp.h"

#include <gtest/gtest.h>

#include <string>

namespace qoro::test
{

/// Seconds. Every answer is far faster; only a hang reaches this.
constexpr double Deadline = 120;

inline void answer_ok(const RawServer::Connection& connection, const std::string& body)
{
    connection.send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
}

} // namespace qoro::test
