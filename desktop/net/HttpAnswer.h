#pragma once

#include <cstdint>
#include <optional>
#include <string>

typedef struct _SoupMessageHeaders SoupMessageHeaders;

namespace qoro
{

/// What the head of an HTTP answer says about the bytes behind it.
struct HttpAnswer {
    /// The file's byte that comes first; absent for an answer without a usable part (another status than 200 and 206, a
    /// part that does not say which).
    std::optional<std::uint64_t> first;
    /// Bytes of the whole file; absent when it does not tell.
    std::optional<std::uint64_t> size;
    /// Whether it says that no part can be asked for.
    bool refuses_parts = false;
    /// Whether the bytes come packed.
    bool packed = false;
    /// What it calls this version of the file, if that identifies the file byte for byte (RFC 9110, 8.8.3); else empty.
    std::string version;
};

/// @param headers anything that a server sends
HttpAnswer read_answer(unsigned status, SoupMessageHeaders* headers);

} // namespace qoro
