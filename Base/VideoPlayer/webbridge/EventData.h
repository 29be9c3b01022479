#pragma once

#include "platform/Value.h"

#include <string_view>
#include <utility>

namespace qoro
{

/// Makes the data of script events, a mapping with one entry each. Several events a second carry data, so a mapping is
/// used again as soon as no one retains it.
class EventData
{
public:
    /// A mapping with this entry only. It stays as it is while the caller retains it.
    NSDictionary with(std::string_view key, Value value)
    {
        if (!data_ || data_.is_shared())
            data_ = NSDictionary::dictionary();
        data_.removeAllObjects();
        data_.setObject(std::move(value), key);
        return data_;
    }

private:
    NSDictionary data_;
};

} // namespace qoro
