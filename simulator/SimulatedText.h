#pragma once

#include "formats/World.h"
#include "platform/Ports.h"

namespace qoro
{

/// Returns the size that the world defines for a text. Otherwise: 7 points per code point wide and 16 points high; an
/// empty text is 0 by 16, a null one 0 by 0. Clamped to the box.
class SimulatedText final : public TextMeasurer
{
public:
    explicit SimulatedText(const World& world) : world_(world) {}
    CGSize measure(const NSString& text, const FontSpec& font, CGSize box) override;

private:
    const World& world_;
};

/// Decodes any bytes with a PNG or JPEG signature to an empty picture.
class SimulatedImages final : public ImageDecoder
{
public:
    std::shared_ptr<const DecodedImage> decode(const NSData& bytes) override;

private:
    /// Shared by all results: nothing is drawn here.
    const std::shared_ptr<const DecodedImage> picture_ = std::make_shared<DecodedImage>();
};

} // namespace qoro
