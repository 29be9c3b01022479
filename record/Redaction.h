#pragma once

#include "formats/HostSetup.h"
#include "platform/Ports.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qoro
{

/// Replaces identifiers of the device, the viewer and the session wherever they occur in texts, each by a value of its
/// own that is always the same: a session with the replacements in place of the identifiers writes the same texts.
class Redaction
{
public:
    /// Replaces nothing.
    Redaction() = default;
    /// Replaces the device's identifier and its hash, the host's cookie identifier and session number, and the name of
    /// the home folder of the user who runs this program. Texts of fewer than three bytes and numbers of fewer than
    /// five digits identify nobody, and stay.
    Redaction(const DeviceFacts& device, const HostSetup& host);

    /// @param text of JSON or of any kind
    std::string of(std::string_view text) const;

private:
    /// Where a text is replaced: everywhere, but not inside a longer word, or not inside a longer number.
    enum class Part { Any, OfWord, OfNumber };
    struct Replacement {
        std::string text;
        std::string by;
        Part part = Part::Any;
    };
    void replace(const std::string& text, const std::string& by);
    static bool is_inside(const Replacement& each, std::string_view text, std::size_t at);

    std::vector<Replacement> replacements_;
};

} // namespace qoro
