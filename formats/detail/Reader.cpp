#include "formats/detail/Reader.h"

#include "formats/InputError.h"
#include "formats/detail/Names.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qoro::detail
{

void Reader::refuse(const std::string& expected) const
{
    throw InputError(*file_, path_, "expected " + expected + ", got " + shown(*json_));
}

const Reader& Reader::object() const
{
    if (!json_->is_object())
        refuse("an object");
    return *this;
}

const Reader& Reader::with_keys(std::initializer_list<std::string_view> keys) const
{
    object();
    for (const auto& [key, value] : json_->items())
        if (std::ranges::find(keys, key) == keys.end())
            throw InputError(*file_, under(path_, key), "unknown key" + did_you_mean(key, keys));
    return *this;
}

std::optional<Reader> Reader::at(std::string_view key) const
{
    const auto found = json_->find(std::string(key));
    if (found == json_->end())
        return std::nullopt;
    return Reader(*found, *file_, under(path_, key));
}

std::vector<std::pair<std::string, Reader>> Reader::entries() const
{
    object();
    std::vector<std::pair<std::string, Reader>> all;
    for (const auto& [key, value] : json_->items())
        all.emplace_back(key, Reader(value, *file_, under(path_, key)));
    return all;
}

std::vector<Reader> Reader::list(const std::string& expected) const
{
    if (!json_->is_array())
        refuse(expected);
    std::vector<Reader> all;
    all.reserve(json_->size());
    for (const Json& each : *json_)
        all.emplace_back(each, *file_, under(path_, all.size()));
    return all;
}

bool Reader::flag() const
{
    if (!json_->is_boolean())
        refuse("true or false");
    return json_->get<bool>();
}

double Reader::number(const std::string& expected) const
{
    if (!json_->is_number())
        refuse(expected);
    return json_->get<double>();
}

double Reader::seconds() const
{
    static const std::string expected = "a number of seconds from 0 to 1000000000";
    const double number = this->number(expected);
    if (number < 0 || number > LatestMoment)
        refuse(expected);
    return number;
}

std::int32_t Reader::whole(const std::string& expected) const
{
    const double number = this->number(expected);
    if (std::trunc(number) != number || number < std::numeric_limits<std::int32_t>::min() ||
        number > std::numeric_limits<std::int32_t>::max())
        refuse(expected);
    return static_cast<std::int32_t>(number);
}

const std::string& Reader::text(const std::string& expected) const
{
    if (!json_->is_string())
        refuse(expected);
    return json_->get_ref<const std::string&>();
}

NSString Reader::text_or_null() const
{
    if (is_null())
        return nullptr;
    return text("a text or null");
}

CGSize Reader::size(const std::string& expected) const
{
    if (!json_->is_array() || json_->size() != 2 || !(*json_)[0].is_number() || !(*json_)[1].is_number())
        refuse(expected);
    return {(*json_)[0].get<double>(), (*json_)[1].get<double>()};
}

std::optional<CGSize> Reader::size_or_null() const
{
    if (is_null())
        return std::nullopt;
    return size("[width, height] or null");
}

std::string listed(const std::vector<std::string>& names)
{
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

} // namespace qoro::detail
