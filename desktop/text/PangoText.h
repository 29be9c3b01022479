#pragma once

#include "desktop/glib/Owned.h"
#include "platform/Ports.h"

typedef struct _PangoContext PangoContext;
typedef struct _PangoLayout PangoLayout;

namespace qoro
{

/// Measures text with Pango, without a display. Fractions of a point are preserved, because hinting is off.
class PangoText : public TextMeasurer
{
public:
    PangoText();
    PangoText(const PangoText&) = delete;
    PangoText& operator=(const PangoText&) = delete;

    CGSize measure(const NSString& text, const FontSpec& font, CGSize box) override;

private:
    const ObjectRef<PangoContext> context_;
};

/// A layout with the properties of labels and titles: wrapped by character, without hyphens, in the font that replaces
/// the platform's on this machine (Liberation Sans, metrically compatible with Arial). A point is a pixel.
/// @param width at which lines wrap, in points
ObjectRef<PangoLayout> text_layout(PangoContext* context, const std::string& text, const FontSpec& font, double width);

} // namespace qoro
