#include "desktop/net/ContentType.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>

namespace qoro
{

namespace
{
struct Row {
    std::string_view extension;
    const char* type;
};

constexpr auto Types = std::to_array<Row>({
    {"html", "text/html; charset=utf-8"},
    {"htm", "text/html; charset=utf-8"},
    {"js", "text/javascript; charset=utf-8"},
    {"mjs", "text/javascript; charset=utf-8"},
    {"css", "text/css; charset=utf-8"},
    {"txt", "text/plain; charset=utf-8"},
    {"json", "application/json"},
    {"xml", "application/xml"},
    {"wasm", "application/wasm"},
    {"svg", "image/svg+xml"},
    {"png", "image/png"},
    {"jpg", "image/jpeg"},
    {"jpeg", "image/jpeg"},
    {"gif", "image/gif"},
    {"webp", "image/webp"},
    {"ico", "image/x-icon"},
    {"mp4", "video/mp4"},
    {"m4v", "video/mp4"},
    {"mov", "video/quicktime"},
    {"webm", "video/webm"},
    {"ogv", "video/ogg"},
    {"mkv", "video/x-matroska"},
    {"ts", "video/mp2t"},
    {"m3u8", "application/vnd.apple.mpegurl"},
    {"mp3", "audio/mpeg"},
    {"m4a", "audio/mp4"},
    {"aac", "audio/aac"},
    {"ogg", "audio/ogg"},
    {"wav", "audio/wav"},
    {"woff", "font/woff"},
    {"woff2", "font/woff2"},
    {"ttf", "font/ttf"},
    {"otf", "font/otf"},
});
} // namespace

const char* content_type_of(std::string_view path)
{
    const std::size_t dot = path.find_last_of("./");
    std::string extension;
    if (dot != std::string_view::npos && path[dot] == '.')
        extension = path.substr(dot + 1);
    std::ranges::transform(extension, extension.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const auto* row = std::ranges::find(Types, extension, &Row::extension);
    return row == Types.end() ? "application/octet-stream" : row->type;
}

} // namespace qoro
