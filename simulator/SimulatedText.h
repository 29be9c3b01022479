#pragma once

#include "platform/Ports.h"
#include "session/World.h"

namespace qoro
{

/// Measures a text as the world says; any other is 7 points a code point wide and 16 high, an empty one 0 by 16, a null
/// one 0 by 0. Cut to the box.
class SimulatedText final : public TextMeasurer
{
public:
    explicit SimulatedText(const World& world) : world_(world) {}
    CGSize measure(const NSString& text, const FontSpec& font, CGSize box) override;

private:
    const World& world_;
};

/// Takes bytes with the signature of a PNG or JPEG file for a picture.
class SimulatedImages final : public ImageDecoder
{
public:
    std::shared_ptr<const DecodedImage> decode(const NSData& bytes) override;

private:
    /// One for all: nothing is drawn here.
    const std::shared_ptr<const DecodedImage> picture_ = std::make_shared<DecodedImage>();
};

} // namespace qoro
