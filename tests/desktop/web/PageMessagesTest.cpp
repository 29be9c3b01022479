#include "tests/desktop/web/PageTest.h"

#include <cstdio>

namespace qoro::test
{
namespace
{

/// Limits on the messages of a page, enforced in the page's process.
class PageMessagesTest : public PageTest
{
};

TEST_F(PageMessagesTest, OnlyTheBoundedBridgeExists)
{
    load_script("note(typeof window.webkit?.messageHandlers?.qoroPlayer, typeof window.webkit?.messageHandlers?."
                "textEntry, typeof qoroBridge)");
    wait_for(R"(note["undefined","undefined","function"])");
}

TEST_F(PageMessagesTest, TheLibraryRefusesTooLargeArgumentsAndSendsNothing)
{
    load_script(
        "const names = n => Object.fromEntries([...Array(n).keys()].map(i => [`n${i}`, i]));"
        "let deep = []; for (let n = 0; n < 40; ++n) deep = [deep];"
        "const said = value => qoroPlayer.checkCanPlayNextVideo(value).then(() => 'taken', error => error.message);"
        "Promise.all([names(800000), names(255), names(254), 'x'.repeat(1e8), Array(1e6).fill(0), "
        "  Object.assign([], {length: 4e9}), 'x'.repeat(60000), deep].map(said)).then(all => note(...all));");
    wait_for(R"(note["The arguments are too long.","The arguments are too long.","taken",)"
             R"("The arguments are too long.","The arguments are too long.","The arguments are too long.",)"
             R"("taken","The arguments are nested too deeply."])");
    EXPECT_TRUE(recorder.refusals.empty()) << "nothing of it left the page";
}

TEST_F(PageMessagesTest, MessagesThatBypassTheLibraryAreRefusedToo)
{
    load_script("const sent = text => new Promise(done => qoroBridge(text, error => done(error === null)));"
                "const many = Object.fromEntries([...Array(800000).keys()].map(i => [`n${i}`, i]));"
                "Promise.all([sent(JSON.stringify({command: 'c', args: [many]})), sent('x'.repeat(2e7)), sent(7),"
                "  sent({toString() { return '{}'; }}), sent('\\ud800')]).then(all => note(...all));");
    wait_for("note[false,false,false,false,false]");
    EXPECT_FALSE(recorder.has("c"));
    EXPECT_FALSE(recorder.refusals.empty());
}

TEST_F(PageMessagesTest, EveryMessageIsAnsweredOnce)
{
    load_script("let answers = 0; for (let n = 0; n < 1000; ++n)"
                "  qoroBridge(JSON.stringify({command: 'c', args: []}), () => { ++answers; });"
                "setTimeout(() => note(answers), 4000);");
    wait_for("note[1000]");
    EXPECT_LT(recorder.count("c[]"), 400) << "300 are heard at once";
    EXPECT_GT(recorder.count("c[]"), 299);
}

TEST_F(PageMessagesTest, LargeMessagesPassAFewAtATime)
{
    load_script("const text = JSON.stringify({command: 'c', args: ['x'.repeat(60000)]});"
                "let taken = 0, left = 100; const began = performance.now(); for (let n = 0; n < 100; ++n)"
                "  qoroBridge(text, error => { taken += error === null; if (--left === 0) report(); });"
                "const took = performance.now() - began;"
                "const report = () => setTimeout(() => note('taken', taken, Math.ceil(took)), 500);");
    ASSERT_TRUE(platform.loop().run_until(
        [&] { return !recorder.heard.empty() && recorder.heard.back().starts_with("note"); }, 15));
    int taken = 0;
    int milliseconds = 0;
    ASSERT_EQ(std::sscanf(recorder.heard.back().c_str(), R"(note["taken",%d,%d])", &taken, &milliseconds), 2)
        << recorder.heard.back();
    // 256 KiB at once, and what 512 KiB a second allow while the messages are sent.
    EXPECT_GE(taken, 4);
    EXPECT_LE(taken, (256 * 1024 + milliseconds * 512 * 1024 / 1000) / 60'000) << milliseconds;
}

TEST_F(PageMessagesTest, ACallbackThatThrowsDoesNotDisturbOthers)
{
    load_script("qoroBridge('', () => { throw 1; }); qoroBridge(JSON.stringify({command: 'c', args: []}), "
                "() => { throw 2; }); setTimeout(() => note('goes on'), 300);");
    wait_for("note[\"goes on\"]");
}

} // namespace
} // namespace qoro::test
