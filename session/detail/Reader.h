#pragma once

// For this folder's .cpp files alone.

#include "platform/Geometry.h"
#include "session/detail/Json.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qoro::detail
{

/// One value of an input file with its place in it, read as what it must be. Every complaint is an InputError that
/// names the file, the JSON path and what was expected. File and JSON outlive it.
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

    /// @param expected "a number of seconds"
    [[noreturn]] void refuse(const std::string& expected) const;

    /// Refuses anything but an object with keys of these alone.
    const Reader& with_keys(std::initializer_list<std::string_view> keys) const;
    /// Refuses anything but an object.
    const Reader& object() const;
    /// The value under a key of an object; absent when the key is.
    std::optional<Reader> at(std::string_view key) const;
    /// The entries of an object, in order.
    std::vector<std::pair<std::string, Reader>> entries() const;
    /// The values of a list, in order.
    std::vector<Reader> list(const std::string& expected = "a list") const;

    bool flag() const;
    double number(const std::string& expected = "a number") const;
    /// A number of seconds, not negative.
    double seconds() const;
    std::int32_t whole(const std::string& expected = "a whole number") const;
    const std::string& text(const std::string& expected = "a text") const;
    /// A text, or null.
    NSString text_or_null() const;
    /// Two numbers.
    CGSize size(const std::string& expected = "[width, height]") const;
    /// Null is absent.
    std::optional<CGSize> size_or_null() const;

private:
    const Json* json_;
    const std::string* file_;
    std::string path_;
};

/// The latest moment of a session, in seconds: some thirty years.
inline constexpr double LatestMoment = 1e9;

/// Names as a list for an error: "a, b, c".
std::string listed(const std::vector<std::string>& names);

} // namespace qoro::detail
