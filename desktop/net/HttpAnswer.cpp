#include "desktop/net/HttpAnswer.h"

#include <libsoup/soup.h>

#include <string_view>

namespace qoro
{

namespace
{

void read_part(HttpAnswer& answer, SoupMessageHeaders* headers)
{
    goffset first = 0;
    goffset last = 0;
    goffset whole = -1;
    if (!soup_message_headers_get_content_range(headers, &first, &last, &whole) || first < 0 || last < first ||
        (whole >= 0 && last >= whole))
        return;
    answer.first = static_cast<std::uint64_t>(first);
    if (whole >= 0)
        answer.size = static_cast<std::uint64_t>(whole);
}

void read_whole(HttpAnswer& answer, SoupMessageHeaders* headers)
{
    answer.first = 0;
    if (soup_message_headers_get_encoding(headers) != SOUP_ENCODING_CONTENT_LENGTH)
        return;
    const goffset length = soup_message_headers_get_content_length(headers);
    if (length >= 0)
        answer.size = static_cast<std::uint64_t>(length);
}

} // namespace

HttpAnswer read_answer(unsigned status, SoupMessageHeaders* headers)
{
    HttpAnswer answer;
    if (status == SOUP_STATUS_PARTIAL_CONTENT)
        read_part(answer, headers);
    else if (status == SOUP_STATUS_OK)
        read_whole(answer, headers);
    const char* ranges = soup_message_headers_get_one(headers, "Accept-Ranges");
    answer.refuses_parts = ranges && std::string_view(ranges) == "none";
    const char* packed = soup_message_headers_get_one(headers, "Content-Encoding");
    answer.packed = packed && std::string_view(packed) != "identity";
    const char* tag = soup_message_headers_get_one(headers, "ETag");
    answer.version = tag && *tag == '"' ? tag : "";
    return answer;
}

} // namespace qoro
