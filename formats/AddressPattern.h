#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace qoro
{

/// An address whose macros match any text.
class AddressPattern
{
public:
    /// The controller's macros: {CurrentTime}.
    static AddressPattern of_tracker(std::string_view address);
    /// VAST's macros: [CACHEBUSTING]; brackets around anything but capital letters are text.
    static AddressPattern of_document(std::string_view address);

    bool has_macros() const { return texts_.size() > 1; }
    bool matches(std::string_view address) const;
    /// Number of bytes besides macros.
    std::size_t length() const;

private:
    /// The texts between the macros, from before the first to after the last.
    std::vector<std::string> texts_{""};
};

} // namespace qoro
