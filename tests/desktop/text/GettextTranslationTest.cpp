#include "desktop/text/GettextTranslation.h"

#include "desktop/screen/Toolkit.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

namespace qoro::test
{
namespace
{

constexpr CountedText SecondsLeft{"Can be closed in %d second", "Can be closed in %d seconds"};

/// Sets the process's message language for each test and resets it afterwards.
class GettextTranslationTest : public testing::Test
{
protected:
    static void speak(const char* language)
    {
        setenv("LANGUAGE", language, 1);
        // gettext reads LANGUAGE again only when the locale is set.
        setenv("LC_ALL", "C.UTF-8", 1);
        prepare_program();
    }
    ~GettextTranslationTest() override
    {
        unsetenv("LANGUAGE");
        unsetenv("LC_ALL");
        prepare_program();
    }

    GettextTranslation texts;
};

TEST_F(GettextTranslationTest, TextsAreTranslatedIntoGermanAndFrench)
{
    speak("de");
    EXPECT_EQ(texts.translate("Back"), "Zurück");
    speak("fr");
    EXPECT_EQ(texts.translate("Back"), "Page précédente");
}

TEST_F(GettextTranslationTest, TheLanguagesPluralRuleChoosesTheForm)
{
    speak("de");
    EXPECT_EQ(texts.translate(SecondsLeft, 1), "Kann in %d Sekunde geschlossen werden");
    EXPECT_EQ(texts.translate(SecondsLeft, 0), "Kann in %d Sekunden geschlossen werden");
    speak("fr");
    EXPECT_EQ(texts.translate(SecondsLeft, 0), "Peut être fermée dans %d seconde");
    EXPECT_EQ(texts.translate(SecondsLeft, 2), "Peut être fermée dans %d secondes");
}

TEST_F(GettextTranslationTest, WithoutACatalogueOrATranslationTheTextStaysAsItIs)
{
    speak("tlh");
    EXPECT_EQ(texts.translate("Back"), "Back");
    EXPECT_EQ(texts.translate(SecondsLeft, 1), "Can be closed in %d second");
    speak("de");
    EXPECT_EQ(texts.translate("What the ad says"), "What the ad says");
}

TEST_F(GettextTranslationTest, TheLanguageDoesNotChangeNumberFormats)
{
    speak("de");
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
    EXPECT_STREQ(std::setlocale(LC_MESSAGES, nullptr), "C.UTF-8");
}

} // namespace
} // namespace qoro::test
