#pragma once

// Only for this folder's .cpp files.

#include "formats/detail/Json.h"
#include "platform/Geometry.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro::detail
{

/// A value of an input file with its JSON path and typed accessors. Every error is an InputError that names the file,
/// the path and what was expected. File name and JSON outlive it.
class Reader
{
public:
    Reader(const Json& json, const std::string& file, std::string path = "")
        : json_(&json), file_(&file), path_(std::move(path))
    {
    }

    const Json& json() const { return *json_; }
    const std::string& file() const { return *file_; }
    const std::string& path() const { return path_; }
    bool is_null() const { return json_->is_null(); }

    /// Throws "expected ..., got ...".
    /// @param expected "a number of seconds"
    [[noreturn]] void refuse(const std::string& expected) const;

    /// Rejects anything but an object with only these keys.
    const Reader& with_keys(std::initializer_list<std::string_view> keys) const;
    /// Rejects anything but an object.
    const Reader& object() const;
    /// The value under a key of an object; absent without the key.
    std::optional<Reader> at(std::string_view key) const;
    /// The entries of an object, in file order.
    std::vector<std::pair<std::string, Reader>> entries() const;
    /// The values of a list.
    std::vector<Reader> list(const std::string& expected = "a list") const;

    bool flag() const;
    double number(const std::string& expected = "a number") const;
    /// Seconds from 0 to LatestMoment.
    double seconds() const;
    std::int32_t whole(const std::string& expected = "a whole number") const;
    /// A whole number as a value of an enumeration, also one that the enumeration does not name.
    template <typename Enumeration>
    Enumeration enumerated(const std::string& expected) const
    {
        return static_cast<Enumeration>(whole(expected));
    }
    const std::string& text(const std::string& expected = "a text") const;
    /// A string, or null.
    NSString text_or_null() const;
    /// Two numbers.
    CGSize size(const std::string& expected = "[width, height]") const;
    /// Absent for null.
    std::optional<CGSize> size_or_null() const;

private:
    const Json* json_;
    const std::string* file_;
    std::string path_;
};

/// Largest time in a session, in seconds: about thirty years.
inline constexpr double LatestMoment = 1e9;

/// Joins names for an error message: "a, b, c".
std::string listed(const std::vector<std::string>& names);

} // namespace qoro::detail
