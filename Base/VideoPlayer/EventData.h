#pragma once

#include "platform/Value.h"

#include <string_view>
#include <utility>

namespace qoro
{

/// Makes the data of script events with one entry. Several such events a second are sent, so the mappings are used
/// again as long as no listener retains them.
class EventData
{
public:
    /// {key: value}
    NSDictionary with(std::string_view key, Value value)
    {
        set(key, std::move(value));
        return result_;
    }
    /// {"e": {key: value}}
    NSDictionary wrapped(std::string_view key, Value value)
    {
        set(key, std::move(value));
        return data_;
    }

private:
    void set(std::string_view key, Value value)
    {
        if (data_.count_of_handles() != 1 || result_.count_of_handles() != 2) {
            result_ = NSDictionary::dictionary();
            data_ = NSDictionary{{"e", result_}};
        }
        if (!result_.contains(key))
            result_.removeAllObjects();
        result_.setObject(std::move(value), key);
    }

    /// Has two handles, this one and data_'s, unless it is retained elsewhere.
    NSDictionary result_;
    NSDictionary data_;
};

} // namespace qoro
