#pragma once

#include "platform/Ports.h"

typedef struct _PangoContext PangoContext;
typedef struct _PangoLayout PangoLayout;

namespace qoro
{

/// Measures with Pango, without a display: fractions of a point are kept, no hinting rounds them.
class PangoText : public TextMeasurer
{
public:
    PangoText();
    ~PangoText() override;
    PangoText(const PangoText&) = delete;
    PangoText& operator=(const PangoText&) = delete;

    CGSize measure(const NSString& text, const FontSpec& font, CGSize box) override;

private:
    PangoContext* const context_;
};

/// A text laid out as labels and titles are: broken by character, without hyphens, in the font that stands in for the
/// platform's on this machine (Liberation Sans, of the same widths, for Arial). A point is a pixel. The caller unrefs
/// it.
/// @param width where lines break, in points
PangoLayout* text_layout(PangoContext* context, const std::string& text, const FontSpec& font, double width);

} // namespace qoro
