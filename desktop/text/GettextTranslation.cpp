#include "desktop/text/GettextTranslation.h"

#include <filesystem>
#include <libintl.h>
#include <system_error>

namespace qoro
{

namespace
{

constexpr const char* Domain = "qoro-video-ad";

bool has_catalogues(const std::filesystem::path& folder)
{
    std::error_code unreadable;
    for (const auto& language : std::filesystem::directory_iterator(folder, unreadable))
        if (std::filesystem::exists(language.path() / "LC_MESSAGES" / (std::string(Domain) + ".mo"), unreadable))
            return true;
    return false;
}

std::string catalogue_folder()
{
    std::error_code unreadable;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", unreadable);
    // In bin, or in libexec/qoro-ad.
    const std::filesystem::path around = program.parent_path().parent_path();
    for (const std::filesystem::path& prefix : {around, around.parent_path()})
        if (const auto beside = prefix / "share/locale"; has_catalogues(beside))
            return beside.string();
    return QORO_LOCALE_FOLDER;
}

} // namespace

GettextTranslation::GettextTranslation()
{
    bindtextdomain(Domain, catalogue_folder().c_str());
    bind_textdomain_codeset(Domain, "UTF-8");
}

std::string GettextTranslation::translate(const char* text)
{
    return dgettext(Domain, text);
}

std::string GettextTranslation::translate(const CountedText& text, unsigned long number)
{
    return dngettext(Domain, text.one, text.many, number);
}

} // namespace qoro
