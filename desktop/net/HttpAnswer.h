#pragma once

#include <cstdint>
#include <optional>
#include <string>

typedef struct _SoupMessageHeaders SoupMessageHeaders;

namespace qoro
{

/// What the header section of an HTTP answer says about its body.
struct HttpAnswer {
    /// Offset in the file of the first byte of the body. Absent if the answer has no usable part: a status other than
    /// 200 and 206, or a part without a valid Content-Range.
    std::optional<std::uint64_t> first;
    /// Bytes of the whole file; absent if the answer does not state it.
    std::optional<std::uint64_t> size;
    /// Whether the server refuses range requests ("Accept-Ranges: none").
    bool refuses_parts = false;
    /// Whether the body has a content coding other than identity.
    bool packed = false;
    /// Strong validator of this version of the file (ETag; RFC 9110, 8.8.3); empty without one.
    std::string version;
};

/// Extracts the facts of an answer.
/// @param headers as received; they may contain anything
HttpAnswer read_answer(unsigned status, SoupMessageHeaders* headers);

} // namespace qoro
