#pragma once

#include <string>
#include <string_view>

namespace qoro
{

/// What an input file contains.
enum class InputKind {
    /// A description of an ad: JSON.
    Ad,
    /// A session: JSON with "ad" or "steps", or a recording.
    Scenario,
    /// VAST: XML, or an address where it is.
    Tag
};

/// What a user names as an ad: a file, a folder with the file ad.json, "-" for standard input, or an address.
struct AdInput {
    InputKind kind = InputKind::Ad;
    /// Of the file, for messages, "stdin" for standard input; the address of a tag that is not a file.
    std::string name = {};
    /// Bytes of the file; empty for an address.
    std::string text = {};
    bool is_address = false;
};

/// Reads what a user names, as far as needed to know what it is.
/// @param unclear what JSON is that has neither a property of an ad nor a key of a scenario
/// @throws InputError for what cannot be read, and for what is neither JSON nor XML
AdInput read_ad_input(const std::string& named, InputKind unclear = InputKind::Ad);

/// Reads what a user names as a VAST tag; the content of a file is not looked at further.
/// @throws InputError for what cannot be read, and for JSON
AdInput read_tag_input(const std::string& named);

/// The ad's file: that of a folder is its ad.json.
std::string ad_file_of(const std::string& named);

/// Whether a text is XML rather than JSON: it begins with "<", in UTF-8 or UTF-16, perhaps after a byte order mark.
bool is_xml(std::string_view text);

} // namespace qoro
