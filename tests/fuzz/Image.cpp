// A picture's bytes, as a server sends them.

#include "desktop/images/GdkImages.h"
#include "tests/fuzz/FuzzTarget.h"

#include <cstdint>
#include <string>

namespace qoro
{

void fuzz::run_input(std::string_view input)
{
    const auto image = GdkImages().decode(NSData(std::string(input)));
    if (!image)
        return;
    const auto& decoded = static_cast<const GdkDecodedImage&>(*image);
    require(decoded.width() > 0 && decoded.height() > 0, "a picture has pixels");
    require(std::int64_t{decoded.width()} * decoded.height() <= 64'000'000, "a picture's size is bounded");
}

} // namespace qoro
