#pragma once

#include "desktop/cache/CacheFolder.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qoro
{

/// What stands beside a copy.
struct CacheRecord {
    std::string address;
    std::uint64_t length = 0;
    /// Of the content: SHA-256, in lower-case hexadecimal digits.
    std::string digest;
    /// The file that is known to have this content. Its time of change lies before it was finished, so that whoever
    /// writes to it afterwards changes it, however soon.
    std::uint64_t inode = 0;
    std::int64_t modified = 0;

    /// Whether a file is still the one that is known, as far as can be told without reading it.
    bool knows(const CacheFolder::Facts& facts) const
    {
        return facts.length == length && facts.inode == inode && facts.modified == modified;
    }
};

std::string to_json(const CacheRecord& record);
/// @return absent for a text that is no record
std::optional<CacheRecord> read_cache_record(std::string_view json);

/// SHA-256 in lower-case hexadecimal digits.
std::string digest_of(std::string_view bytes);
/// Of a file's content from its beginning; empty when it cannot be read.
std::string digest_of(const Descriptor& file);

} // namespace qoro
