#pragma once

#include "platform/Ports.h"

namespace qoro
{

/// Translates with the catalogues of gettext's domain "qoro-video-ad", in the language of the process' locale
/// (LC_MESSAGES). They are found in share/locale beside the folder of the program, where both an installed program and
/// a build tree have them, or else where this library was to be installed.
class GettextTranslation : public Translation
{
public:
    GettextTranslation();
    std::string translate(const char* text) override;
    std::string translate(const CountedText& text, unsigned long number) override;
};

} // namespace qoro
