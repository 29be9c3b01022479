#include "record/MendedRecording.h"

#include "formats/InputError.h"
#include "record/Recording.h"
#include "record/detail/Entries.h"

#include <algorithm>
#include <cstddef>

namespace qoro
{

namespace
{

constexpr std::string_view Beginning = "{\"recording\":";
/// A text of JSON has no line breaks, so this occurs once.
constexpr std::string_view EntriesBegin = "\n\"replay\":[\n";

bool is_entry(std::string_view text)
{
    const auto json = detail::Json::parse(text, nullptr, false);
    return json.is_object() && !json.empty();
}

/// The entry of a line; empty without a whole one.
std::string_view entry_of(std::string_view line)
{
    // A write that has replaced only the first bytes of the closing brackets leaves the last ones.
    for (const std::string_view end : {"", ",", ",]}"})
        if (line.ends_with(end) && is_entry(line.substr(0, line.size() - end.size())))
            return line.substr(0, line.size() - end.size());
    return {};
}

} // namespace

std::optional<MendedRecording> mended_recording(std::string_view text, const std::string& file)
{
    if (!text.starts_with(Beginning))
        return std::nullopt;
    if (detail::Json::accept(text)) {
        if (text.find("\"replay\"") == std::string_view::npos)
            throw InputError(file, "", "the recording ended before an ad opened: there is nothing to replay");
        return std::nullopt;
    }
    const std::size_t place = text.find(EntriesBegin);
    if (place == std::string_view::npos)
        throw InputError(file, "", "the recording was cut off before its first entry: there is nothing to replay");
    MendedRecording mended;
    mended.text = text.substr(0, place + EntriesBegin.size() - 1);
    if (!detail::Json::accept(mended.text + std::string(RecordingTail)))
        throw InputError(file, "", "the recording is damaged before its first entry: there is nothing to replay");

    std::size_t at = place + EntriesBegin.size();
    std::size_t entries = 0;
    while (at < text.size()) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view entry = entry_of(text.substr(at, end - at));
        if (entry.empty())
            break;
        mended.text.append(entries++ == 0 ? "\n" : ",\n").append(entry);
        at = end + 1;
    }
    mended.text += RecordingTail;
    mended.lost = "the recording was cut off after " + std::to_string(entries) + (entries == 1 ? " entry" : " entries");
    if (at < text.size())
        mended.lost += "; what follows from line " + std::to_string(std::ranges::count(text.substr(0, at), '\n') + 1) +
                       " on cannot be read and is left out";
    return mended;
}

} // namespace qoro
