#pragma once

#include "desktop/cache/CacheFolder.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qoro
{

/// Metadata stored next to a copy.
struct CacheRecord {
    std::string address;
    std::uint64_t length = 0;
    /// SHA-256 of the content, in lower-case hexadecimal digits.
    std::string digest;
    /// Identify the file that is known to have this content. The time of modification is set to a moment before the
    /// file was finished, so that any later write changes it, however soon it follows.
    std::uint64_t inode = 0;
    std::int64_t modified = 0;

    /// Whether a file is still the recorded one, judged without reading it.
    bool knows(const CacheFolder::Facts& facts) const
    {
        return facts.length == length && facts.inode == inode && facts.modified == modified;
    }
};

/// The record as JSON text.
std::string to_json(const CacheRecord& record);
/// @return absent for a text that is not a record
std::optional<CacheRecord> read_cache_record(std::string_view json);

/// SHA-256 in lower-case hexadecimal digits.
std::string digest_of(std::string_view bytes);
/// The same, of a file's content from its beginning; empty if it cannot be read.
std::string digest_of(const Descriptor& file);

} // namespace qoro
