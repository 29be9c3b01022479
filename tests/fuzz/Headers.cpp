// The head of an HTTP response. The last line is also used as a file name.

#include "desktop/net/ContentType.h"
#include "desktop/net/HttpAnswer.h"
#include "tests/fuzz/FuzzTarget.h"

#include <libsoup/soup.h>

#include <string>

namespace qoro
{

void fuzz::run_input(std::string_view input)
{
    require(*content_type_of(input) != '\0', "every name has a content type");

    SoupMessageHeaders* headers = soup_message_headers_new(SOUP_MESSAGE_HEADERS_RESPONSE);
    SoupHTTPVersion protocol = SOUP_HTTP_1_0;
    guint status = 0;
    char* phrase = nullptr;
    const std::string head(input);
    if (soup_headers_parse_response(head.c_str(), static_cast<int>(head.size()), headers, &protocol, &status,
                                    &phrase)) {
        const HttpAnswer answer = read_answer(status, headers);
        require(answer.first.has_value() || status != SOUP_STATUS_OK, "a whole file begins with its first byte");
        // The next request sends a version back to the server.
        SoupMessageHeaders* asked = soup_message_headers_new(SOUP_MESSAGE_HEADERS_REQUEST);
        if (!answer.version.empty())
            soup_message_headers_replace(asked, "If-Range", answer.version.c_str());
        const char* sent = soup_message_headers_get_one(asked, "If-Range");
        require(!sent || std::string_view(sent).find_first_of("\r\n") == std::string_view::npos,
                "an answer adds no line to a request");
        soup_message_headers_unref(asked);
    }
    g_free(phrase);
    soup_message_headers_unref(headers);
}

} // namespace qoro
