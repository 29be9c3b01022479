#pragma once

#include "platform/Ports.h"

namespace qoro
{

/// Translates with the catalogues of the gettext domain "qoro-video-ad", in the language of the process locale
/// (LC_MESSAGES). The catalogues are searched in share/locale next to the program's folder, which serves installed
/// programs and build trees, otherwise in the locale folder configured at build time.
class GettextTranslation : public Translation
{
public:
    GettextTranslation();
    std::string translate(const char* text) override;
    std::string translate(const CountedText& text, unsigned long number) override;
};

} // namespace qoro
