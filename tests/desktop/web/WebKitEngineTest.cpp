#include "desktop/web/ProcessFacts.h"
#include "tests/desktop/web/PageTest.h"

#include <filesystem>
#include <fstream>
#include <set>
#include <signal.h>

namespace qoro::test
{
namespace
{

class WebKitEngineTest : public PageTest
{
};

TEST_F(WebKitEngineTest, APagesStartAndEndAreReportedOnceEach)
{
    load("<p>hello</p>");
    wait_for("finish");
    EXPECT_EQ(recorder.heard, (std::vector<std::string>{"start", "finish"}));
    EXPECT_EQ(engine->current_address().absoluteString().text(), server.base());
}

TEST_F(WebKitEngineTest, ThereIsNoAddressBeforeTheFirstPage)
{
    EXPECT_FALSE(engine->current_address());
}

TEST_F(WebKitEngineTest, ANullPageReportsStartAndEndLikeAnyOther)
{
    engine->load_html(nullptr, NSURL::URLWithString(server.base()));
    wait_for("finish");
    EXPECT_EQ(recorder.heard, (std::vector<std::string>{"start", "finish"}));
}

TEST_F(WebKitEngineTest, APageWithoutABaseLoads)
{
    engine->load_html("<p>hello</p>", nullptr);
    wait_for("finish");
    EXPECT_EQ(recorder.heard, (std::vector<std::string>{"start", "finish"}));
}

TEST_F(WebKitEngineTest, TheEnginesOwnLoadNeedsNoPermissionHoweverItsBaseIsSpelt)
{
    engine->load_html("<p>hello</p>", NSURL::URLWithString("HTTP://127.0.0.1:80/%7ea/../b?q=\u00fc#here"));
    wait_for("finish");
    EXPECT_EQ(recorder.heard, (std::vector<std::string>{"start", "finish"}));
}

TEST_F(WebKitEngineTest, APageLoadedOverAnUnfinishedOneReportsOnlyItsOwnEnd)
{
    load("<img src='/never'>");
    wait_for("start");
    recorder.heard.clear();
    load_script("note('second')");
    wait_for("finish");
    EXPECT_EQ(recorder.heard, (std::vector<std::string>{"start", "note[\"second\"]", "finish"}));
}

TEST_F(WebKitEngineTest, APageThatNeverFinishesLoadingRunsItsScriptAndCanBeDestroyed)
{
    load_script("note('here')", "<img src='/never'>");
    wait_for("note[\"here\"]");
    engine.reset();
    EXPECT_FALSE(recorder.has("finish"));
}

// ------------------------------------------------------------------------------------------------- script library

TEST_F(WebKitEngineTest, TheLibraryLoadsOnAPageFromAnUnsafeAddress)
{
    load_script("note(typeof qoroPlayer, Object.isFrozen(qoroPlayer))");
    wait_for(R"(note["object",true])");
}

TEST_F(WebKitEngineTest, TheLibraryLoadsOnAPageFromASafeAddress)
{
    engine->load_html("<head><script src='kit://script.js'></script></head><script>qoroPlayer.setVideoPlay()</script>",
                      NSURL::URLWithString("https://ads.example/creative/"));
    wait_for("setVideoPlay[]");
}

TEST_F(WebKitEngineTest, LoadingTheLibraryTwiceHasNoEffect)
{
    server.pages["/mraid.js"] = {"text/javascript", std::string(script_library())};
    load_script("qoroPlayer.addEventListener('video_play', () => note('played')); first = qoroPlayer;");
    wait_for("finish");
    load_script("const first = qoroPlayer; const again = document.createElement('script'); again.src = 'mraid.js';"
                "again.onload = () => note(first === qoroPlayer); document.head.append(again);");
    wait_for("note[true]");
    EXPECT_EQ(server.asked, std::vector<std::string>{"/mraid.js"});
}

TEST_F(WebKitEngineTest, AnElementNamedLikeTheLibraryDoesNotReplaceIt)
{
    load("<body><div id='qoroPlayer'></div><script src='kit://script.js'></script>"
         "<script>qoroPlayer.setVideoPlay()</script>");
    wait_for("setVideoPlay[]");
}

TEST_F(WebKitEngineTest, ThePageCannotReplaceTheLibrary)
{
    load_script("try { qoroPlayer = 1; } catch {} try { qoroPlayer.setVideoPlay = 1; } catch {}"
                "qoroPlayer.setVideoPlay();");
    wait_for("setVideoPlay[]");
}

TEST_F(WebKitEngineTest, TheLibraryOutlivesAPageThatReplacesBuiltIns)
{
    recorder.answer = [](const ScriptMessage&) { return ScriptAnswer{nullptr, 30}; };
    load_script("Promise.reject = Object.create = Object.hasOwn = Error = setTimeout = null;"
                "JSON.parse = JSON.stringify = null; Function.prototype.bind = Array.prototype[Symbol.iterator] = "
                "null; window.webkit = window.qoroBridge = null;"
                "qoroPlayer.addEventListener('video_play', () => {}); qoroPlayer.getVideoTotalTime();");
    wait_for("getVideoTotalTime[]");
}

TEST_F(WebKitEngineTest, EveryCommandCarriesItsArguments)
{
    load_script("qoroPlayer.setVideoPlay(); qoroPlayer.setVideoPause(); qoroPlayer.setVideoMute();"
                "qoroPlayer.setVideoUnmute(); qoroPlayer.setVideoSeekToTime(12.5); qoroPlayer.getVideoTotalTime();"
                "qoroPlayer.getVideoIsMute(); qoroPlayer.checkVideoPlay();"
                "qoroPlayer.playNextVideo({strVideoUrl: 'http://ad/next.mp4'});"
                "qoroPlayer.checkCanPlayNextVideo('http://ad/next.mp4'); qoroPlayer.checkCanPlayNextVideo(null);"
                "qoroPlayer.cancelPrePauseLocations(); qoroPlayer.changeOrientation('landscape');"
                "qoroPlayer.MRAIDUseCustomClose(true); qoroPlayer.MRAIDClose();");
    wait_for("finish");
    EXPECT_EQ(recorder.heard, (std::vector<std::string>{
                                  "start", "setVideoPlay[]", "setVideoPause[]", "setVideoMute[]", "setVideoUnmute[]",
                                  "setVideoSeekToTime[12.5]", "getVideoTotalTime[]", "getVideoIsMute[]",
                                  "checkVideoPlay[]", R"(playNextVideo[{"strVideoUrl":"http://ad/next.mp4"}])",
                                  R"(checkCanPlayNextVideo["http://ad/next.mp4"])", "checkCanPlayNextVideo[null]",
                                  "cancelPrePauseLocations[]", R"(changeOrientation["landscape"])",
                                  "MRAIDUseCustomClose[true]", "MRAIDClose[]", "finish"}));
}

TEST_F(WebKitEngineTest, ACommandAnswersWithItsValue)
{
    recorder.answer = [](const ScriptMessage& message) {
        return message.command == "note" ? ScriptAnswer{} : ScriptAnswer{nullptr, 29};
    };
    load_script("qoroPlayer.getVideoTotalTime().then(seconds => note(seconds))");
    wait_for("note[29]");
}

TEST_F(WebKitEngineTest, ACommandWithoutAValueAnswersNull)
{
    load_script("qoroPlayer.setVideoPlay().then(nothing => note(nothing))");
    wait_for("note[null]");
}

TEST_F(WebKitEngineTest, ARefusedCommandIsRejectedWithTheReason)
{
    recorder.answer = [](const ScriptMessage& message) {
        return message.command == "note" ? ScriptAnswer{} : ScriptAnswer{"seconds expected", nullptr};
    };
    load_script("qoroPlayer.setVideoSeekToTime(-1).catch(error => note(String(error.message ?? error)))");
    wait_for("note[\"seconds expected\"]");
}

TEST_F(WebKitEngineTest, ACommandThatThePlatformRejectsIsStillAnswered)
{
    recorder.answer = [](const ScriptMessage& message) -> ScriptAnswer {
        if (message.command == "note")
            return {};
        throw PlatformFault{"replace", "out of range"};
    };
    load_script("qoroPlayer.setVideoPlay().catch(() => note('rejected'))");
    wait_for("note[\"rejected\"]");
}

TEST_F(WebKitEngineTest, ArgumentsAreSentAsPlainData)
{
    load_script("qoroPlayer.playNextVideo({strVideoUrl() {}, iCloseBtnCountdown: 5});"
                "qoroPlayer.checkCanPlayNextVideo(); qoroPlayer.checkCanPlayNextVideo(NaN);");
    wait_for("finish");
    EXPECT_EQ(recorder.heard,
              (std::vector<std::string>{"start", R"(playNextVideo[{"iCloseBtnCountdown":5}])",
                                        "checkCanPlayNextVideo[null]", "checkCanPlayNextVideo[null]", "finish"}));
}

TEST_F(WebKitEngineTest, ArgumentsThatCannotBeSentRejectTheCommand)
{
    load_script("const endless = {}; endless.self = endless;"
                "qoroPlayer.playNextVideo(endless).catch(() => note('rejected'))");
    wait_for("finish");
    EXPECT_EQ(recorder.heard, (std::vector<std::string>{"start", "note[\"rejected\"]", "finish"}));
}

// --------------------------------------------------------------------------------------------------------- messages

TEST_F(WebKitEngineTest, InvalidMessagesAreRefusedAndNotDelivered)
{
    load_script("const refused = message => new Promise(done => qoroBridge(JSON.stringify(message) ?? '', error =>"
                "  done(error === null ? note('taken', String(message)) : note('refused'))));"
                "refused('setVideoPlay'); refused(null); refused(7); refused([]); refused({});"
                "refused({command: 'setVideoPlay'}); refused({command: 1, args: []});"
                "refused({command: 'setVideoPlay', args: {}}); refused({args: []});"
                "refused({command: 'setVideoPlay', args: ['x'.repeat(70000)]});"
                "let deep = []; for (let i = 0; i < 40; ++i) deep = [deep];"
                "refused({command: 'setVideoPlay', args: deep}).then(() => note('end'));");
    wait_for("note[\"end\"]");
    EXPECT_EQ(recorder.count("note[\"refused\"]"), 11);
    EXPECT_EQ(recorder.heard.size(), 14U); // eleven refusals, the end, the page's start and its finish
}

TEST_F(WebKitEngineTest, AMessageOfSixtyThousandLettersIsAccepted)
{
    load_script("note('x'.repeat(60000))");
    wait_for("note[\"" + std::string(60000, 'x') + "\"]");
}

TEST_F(WebKitEngineTest, AnEngineCanBeDestroyedInsideAMessage)
{
    recorder.answer = [this](const ScriptMessage&) {
        engine.reset();
        return ScriptAnswer{};
    };
    load_script("qoroPlayer.MRAIDClose()");
    wait_for("MRAIDClose[]");
    platform.loop().run_until([] { return false; }, 0.2);
    EXPECT_EQ(recorder.heard.back(), "MRAIDClose[]");
}

// --------------------------------------------------------------------------------------- navigation and permissions

TEST_F(WebKitEngineTest, AFollowedLinkAsksAsALinkAndStaysWhenRefused)
{
    load_script(
        "onload = () => { document.querySelector('a').click(); setTimeout(() => note(location.pathname), 200); }",
        "</head><a href='/other.html'>x</a><head>");
    wait_for("note[\"/\"]");
    EXPECT_TRUE(recorder.has("ask 0 " + server.base() + "other.html"));
    EXPECT_TRUE(server.asked.empty());
}

TEST_F(WebKitEngineTest, NavigationByAScriptAsksAndIsNotLoadedEvenWhenAllowed)
{
    recorder.allow_loads = true;
    server.pages["/app.apk"] = {"application/octet-stream", "bytes"};
    load_script("const go = (address, then) => { location = address; setTimeout(then, 300); };"
                "onload = () => go('/other.html', () => go('/app.apk', () => go('/', () => note('still here'))));");
    wait_for("note[\"still here\"]");
    for (const char* path : {"other.html", "app.apk", ""}) {
        EXPECT_TRUE(recorder.has("ask 5 " + server.base() + path)) << path;
        EXPECT_TRUE(
            std::count(recorder.refusals.begin(), recorder.refusals.end(), "navigation " + server.base() + path))
            << path;
    }
    EXPECT_TRUE(server.asked.empty()) << "and nothing was downloaded";
}

TEST_F(WebKitEngineTest, APageMayNavigateToItsFragmentsUnderAnyBaseAddress)
{
    recorder.allow_loads = true;
    load_script("onload = () => { location = '#one'; history.pushState({}, '', '/name'); location = '#two';"
                "setTimeout(() => note(location.pathname + location.hash), 300); }");
    wait_for("note[\"/name#two\"]");
    EXPECT_TRUE(recorder.refusals.empty());
    EXPECT_TRUE(server.asked.empty());
}

TEST_F(WebKitEngineTest, ATelephoneLinkAsksAndIsNeverLoaded)
{
    recorder.allow_loads = true;
    load_script("onload = () => { document.querySelector('a').click(); setTimeout(() => note('still here'), 200); }",
                "</head><a href='tel:123'>x</a><head>");
    wait_for("note[\"still here\"]");
    EXPECT_TRUE(recorder.has("ask 0 tel:123"));
}

TEST_F(WebKitEngineTest, NoWindowIsOpened)
{
    load_script("onload = () => note(window.open('/other.html') === null)");
    wait_for("note[true]");
    EXPECT_EQ(recorder.refusals, std::vector<std::string>{"window " + server.base() + "other.html"});
    EXPECT_TRUE(server.asked.empty());
}

TEST_F(WebKitEngineTest, DialogsDoNotBlockThePage)
{
    load_script("alert('stop'); note(confirm('stop?'), prompt('stop?'))");
    wait_for("note[false,null]");
}

TEST_F(WebKitEngineTest, APageCannotBlankItselfAndItsBlankFramesWork)
{
    load_script("const frame = document.createElement('iframe');"
                "frame.onload = () => note('frame', frame.contentDocument.location.href);"
                "document.body.append(frame); frame.contentDocument.body.textContent = 'x';"
                "note(frame.contentDocument.body.textContent);"
                "onload = () => { location = 'about:blank'; setTimeout(() => note('still here'), 300); }");
    wait_for("note[\"still here\"]");
    EXPECT_EQ(recorder.heard, (std::vector<std::string>{"start", R"(note["frame","about:blank"])", R"(note["x"])",
                                                        "finish", R"(note["still here"])"}));
    EXPECT_EQ(recorder.refusals.back(), "navigation about:blank");
}

TEST_F(WebKitEngineTest, LocalFilesAreOutOfReach)
{
    const auto path = std::filesystem::temp_directory_path() / ("qoro-secret-" + std::to_string(getpid()) + ".js");
    std::ofstream(path) << "note('read');";
    recorder.allow_loads = true;
    load_script("const file = 'file://" + path.string() +
                "'; const s = document.createElement('script');"
                "s.src = file; s.onerror = () => note('no script'); document.head.append(s);"
                "fetch(file).catch(() => note('no fetch'));"
                "const f = document.createElement('iframe'); f.src = file; document.body.append(f);"
                "setTimeout(() => { location = file; setTimeout(() => note(location.protocol), 300); }, 200);");
    wait_for("note[\"http:\"]");
    EXPECT_TRUE(recorder.has("note[\"no script\"]"));
    EXPECT_TRUE(recorder.has("note[\"no fetch\"]"));
    EXPECT_FALSE(recorder.has("note[\"read\"]"));
    std::filesystem::remove(path);
}

TEST_F(WebKitEngineTest, AFileAsBaseGivesNoAccessToFiles)
{
    engine->load_html("<script>qoroBridge(JSON.stringify({command: 'note', args: "
                      "[location.href]}), () => {})</script>",
                      NSURL::fileURLWithPath("/etc/passwd"));
    wait_for("note[\"about:blank\"]");
}

TEST_F(WebKitEngineTest, FramesWithinThePageAskBeforeTheyLoad)
{
    load_script("onload = () => note('end')",
                "</head><iframe src='/frame.html'></iframe><iframe srcdoc='x'></iframe><head>");
    wait_for("note[\"end\"]");
    EXPECT_TRUE(recorder.has("ask 5 " + server.base() + "frame.html"));
    EXPECT_TRUE(server.asked.empty());
}

TEST_F(WebKitEngineTest, APagesProcessThatIsKilledIsReportedAndTheNextPageLoads)
{
    load_script("note('alive')");
    wait_for("finish");
    webkit_web_view_terminate_web_process(web_view_of(*engine));
    wait_for("died: the page's process was ended");
    recorder.heard.clear();
    load_script("note('again')");
    wait_for("finish");
    EXPECT_EQ(recorder.heard, (std::vector<std::string>{"start", "note[\"again\"]", "finish"}));
}

TEST_F(WebKitEngineTest, AScaledPageWiderThanTheViewIsShrunk)
{
    GtkWidget* widget = engine->widget_source()->widget();
    GtkWidget* window = gtk_window_new();
    gtk_window_set_default_size(GTK_WINDOW(window), 300, 200);
    gtk_window_set_child(GTK_WINDOW(window), widget);
    gtk_window_present(GTK_WINDOW(window));
    engine->set_scales_page_to_fit(true);
    load("<body style='margin: 0'><div style='width: 600px; height: 10px'></div>");
    wait_for("finish");
    platform.loop().run_until([&] { return webkit_web_view_get_zoom_level(web_view_of(*engine)) < 1; }, 90);
    EXPECT_NEAR(webkit_web_view_get_zoom_level(web_view_of(*engine)), 0.5, 0.02);
    gtk_window_set_child(GTK_WINDOW(window), nullptr);
    gtk_window_destroy(GTK_WINDOW(window));
}

/// The PID namespaces of this program's page processes.
std::set<std::uint64_t> page_process_namespaces()
{
    std::set<std::uint64_t> found;
    for_each_descendant(getpid(), [&](int process, const std::string& name) {
        if (name == "WebKitWebProces")
            found.insert(number_space(process));
    });
    return found;
}

TEST_F(WebKitEngineTest, PagesRunInASandboxWhereItWorks)
{
    if (!sandbox_works())
        GTEST_SKIP()
            << "this machine withholds the sandbox (bwrap or xdg-dbus-proxy fails), so no page can be locked away";
    load("<p>hello</p>");
    wait_for("finish");
    const std::set<std::uint64_t> theirs = page_process_namespaces();
    EXPECT_FALSE(theirs.empty());
    EXPECT_FALSE(theirs.contains(number_space(getpid())));
}

} // namespace
} // namespace qoro::test
