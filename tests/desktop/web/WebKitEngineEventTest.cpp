#include "tests/desktop/web/PageTest.h"

#include <string>
#include <utility>
#include <vector>

namespace qoro::test
{
namespace
{

/// Keeps the listeners that the page registers, and finds them by event name.
struct Listeners {
    NSArray of(const std::string& name) const
    {
        std::vector<Value> ids;
        for (const auto& [event, callback] : registered)
            if (event == name)
                ids.push_back(callback);
        return NSArray(std::move(ids));
    }
    ScriptAnswer operator()(const ScriptMessage& message)
    {
        const std::string name = message.arguments[0].string().text();
        if (message.command == "addEventListener")
            registered.emplace_back(name, message.arguments[2].string().text());
        if (message.command == "removeEventListener")
            std::erase(registered, std::pair(name, message.arguments[1].string().text()));
        return {};
    }
    std::vector<std::pair<std::string, std::string>> registered;
};

class WebKitEngineEventTest : public PageTest
{
protected:
    WebKitEngineEventTest()
    {
        recorder.answer = [this](const ScriptMessage& message) { return listeners(message); };
    }
    void send(const std::string& event, const NSDictionary& data = {})
    {
        engine->call_listeners(event, listeners.of(event), data);
    }

    Listeners listeners;
};

TEST_F(WebKitEngineEventTest, AListenerReceivesTheEventsData)
{
    load_script("for (const name of ['video_timeupdate', 'video_orientation', 'video_play'])"
                "  qoroPlayer.addEventListener(name, data => note(name, data));");
    wait_for("finish");
    send("video_timeupdate", {{"e", NSDictionary{{"current_time", "5"}}}});
    send("video_orientation", {{"orientation", "landscape"}});
    send("video_play");
    wait_for(R"(note["video_timeupdate",{"e":{"current_time":"5"}}])");
    wait_for(R"(note["video_orientation",{"orientation":"landscape"}])");
    wait_for(R"(note["video_play",null])");
}

TEST_F(WebKitEngineEventTest, EventsArriveInTheOrderInWhichTheyWereSent)
{
    load_script("const seen = []; qoroPlayer.addEventListener('count', data => seen.push(data.n));"
                "qoroPlayer.addEventListener('end', () => note(seen.length, seen.every((n, i) => n === i)));");
    wait_for("finish");
    for (int n = 0; n < 500; ++n)
        send("count", {{"n", n}});
    platform.loop().run_until([] { return false; }, 0.01);
    for (int n = 500; n < 600; ++n)
        send("count", {{"n", n}});
    send("end");
    wait_for("note[600,true]");
}

TEST_F(WebKitEngineEventTest, AListenerThatThrowsDoesNotStopTheOthers)
{
    load_script("qoroPlayer.addEventListener('video_play', () => { throw new Error('mine'); });"
                "qoroPlayer.addEventListener('video_play', () => note('heard'));"
                "addEventListener('error', () => note('error reported'));");
    wait_for("finish");
    send("video_play");
    wait_for("note[\"heard\"]");
    wait_for("note[\"error reported\"]");
}

TEST_F(WebKitEngineEventTest, ARemovedListenerReceivesNothingMore)
{
    load_script("const gone = () => note('gone'); qoroPlayer.addEventListener('video_play', gone);"
                "qoroPlayer.removeEventListener('video_play', gone);"
                "qoroPlayer.addEventListener('video_play', () => note('stays'));");
    wait_for("finish");
    ASSERT_EQ(listeners.of("video_play").count(), 1U);
    send("video_play");
    wait_for("note[\"stays\"]");
    EXPECT_FALSE(recorder.has("note[\"gone\"]"));
}

TEST_F(WebKitEngineEventTest, AListenerAddedTwiceIsOneListener)
{
    load_script("const once = () => {}; qoroPlayer.addEventListener('video_play', once);"
                "qoroPlayer.addEventListener('video_play', once);");
    wait_for("finish");
    ASSERT_EQ(listeners.registered.size(), 2U); // the kit keeps an equal pair once
    EXPECT_EQ(listeners.registered[0], listeners.registered[1]);
}

TEST_F(WebKitEngineEventTest, AnEventSentWhileTheListenerRegistersReachesIt)
{
    recorder.answer = [this](const ScriptMessage& message) {
        listeners(message);
        if (message.command == "addEventListener")
            send("video_visibilitychange", {{"e", NSDictionary{{"visibility", 1}}}});
        return ScriptAnswer{};
    };
    load_script("qoroPlayer.addEventListener('video_visibilitychange', data => note(data.e.visibility))");
    wait_for("note[1]");
}

TEST_F(WebKitEngineEventTest, AnEventForAnEarlierPageIsNotDelivered)
{
    load_script("qoroPlayer.addEventListener('video_play', () => note('first page'))");
    wait_for("finish");
    const NSArray of_first_page = listeners.of("video_play");
    recorder.heard.clear();
    listeners.registered.clear();
    load_script("qoroPlayer.addEventListener('video_play', () => note('second page'))");
    wait_for("finish");
    engine->call_listeners("video_play", of_first_page, {});
    send("video_play");
    wait_for("note[\"second page\"]");
    EXPECT_FALSE(recorder.has("note[\"first page\"]"));
}

TEST_F(WebKitEngineEventTest, AnEventAfterThePageHasEndedIsLost)
{
    load_script("qoroPlayer.addEventListener('video_play', () => note('heard'))");
    wait_for("finish");
    webkit_web_view_terminate_web_process(web_view_of(*engine));
    send("video_play");
    wait_for("died: the page's process was ended");
    send("video_play");
    platform.loop().run_until([] { return false; }, 0.1);
    EXPECT_FALSE(recorder.has("note[\"heard\"]"));
}

TEST_F(WebKitEngineEventTest, SpecialCharactersReachTheScriptUnchanged)
{
    load_script("qoroPlayer.addEventListener('text', data => note(data.t === '<\\/script>\\u2028\"\\\\\\u0000ü'))");
    wait_for("finish");
    send("text", {{"t", std::string("</script>\u2028\"\\") + '\0' + "ü"}});
    wait_for("note[true]");
}

} // namespace
} // namespace qoro::test
