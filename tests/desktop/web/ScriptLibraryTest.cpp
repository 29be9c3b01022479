#include "tests/desktop/web/PageTest.h"

// The page's `mraid` object in the real engine. The test sends it the facts that the kit sends.

namespace qoro::test
{
namespace
{

/// The facts that the kit sends first.
NSDictionary first_facts()
{
    return {
        {"supports", NSDictionary{{"tel", true}, {"sms", false}, {"calendar", true}, {"inlineVideo", true}}},
        {"orientation", NSDictionary{{"orientation", "portrait"}, {"locked", true}}},
        {"screen", NSDictionary{{"width", 375}, {"height", 812}}},
        {"position", NSDictionary{{"x", 0}, {"y", 254.5}, {"width", 375}, {"height", 523}}},
        {"exposure",
         NSDictionary{{"exposedPercentage", 100},
                      {"visibleRectangle", NSDictionary{{"x", 0}, {"y", 0}, {"width", 375}, {"height", 523}}}}},
        {"viewable", true},
        {"volume", 60},
        {"state", "default"},
    };
}

class ScriptLibraryTest : public PageTest
{
protected:
    /// Sends facts to the page's `mraid` object, as the kit does.
    void send(const NSDictionary& facts) { engine->call_listeners("mraid", recorder.mraid, facts); }

    /// Loads a page whose body is a script, and sends it the first facts.
    void begin(const std::string& script)
    {
        load_script(script);
        wait_for("finish");
        ASSERT_EQ(recorder.mraid.count(), 1U);
        send(first_facts());
    }
    /// The lines received after "start" and "finish".
    std::vector<std::string> heard_since_loading() const { return {recorder.heard.begin() + 2, recorder.heard.end()}; }
};

TEST_F(ScriptLibraryTest, APageFindsTheDocumentedCallsAndNothingElse)
{
    load_script("const names = object => Reflect.ownKeys(object).map(String).sort().join(' ');"
                "note(names(mraid)); note(names(qoroPlayer)); note(names(MRAID_ENV));");
    wait_for("finish");
    EXPECT_TRUE(recorder.has(
        "note[\"addEventListener close createCalendarEvent expand getCurrentAppOrientation getCurrentPosition "
        "getDefaultPosition getExpandProperties getLocation getMaxSize getOrientationProperties getPlacementType "
        "getResizeProperties getScreenSize getState getVersion isViewable open playVideo removeEventListener resize "
        "setExpandProperties setOrientationProperties setResizeProperties storePicture supports unload "
        "useCustomClose\"]"));
    EXPECT_TRUE(recorder.has(
        "note[\"MRAIDClose MRAIDUseCustomClose addEventListener cancelPrePauseLocations "
        "changeOrientation checkCanPlayNextVideo checkVideoPlay getConsent getControlRects getVideoIsMute "
        "getVideoTotalTime playNextVideo removeEventListener replay setVideoMute setVideoPause setVideoPlay "
        "setVideoSeekToTime setVideoUnmute\"]"));
    EXPECT_TRUE(recorder.has("note[\"appId coppa ifa limitAdTracking sdk sdkVersion version\"]"));
}

TEST_F(ScriptLibraryTest, TheEnvironmentNamesTheStandardAndNoDevice)
{
    load_script("note(MRAID_ENV)");
    wait_for(
        R"(note[{"appId":"","coppa":false,"ifa":"","limitAdTracking":true,"sdk":"Qoro Video Ad","sdkVersion":")" QORO_LIBRARY_VERSION
        R"(","version":"3.0"}])");
}

TEST_F(ScriptLibraryTest, AnAdIsLoadingUntilTheKitsFirstFacts)
{
    load_script("note(mraid.getVersion(), mraid.getPlacementType(), mraid.getState(), mraid.isViewable())");
    wait_for(R"(note["3.0","interstitial","loading",false])");
}

TEST_F(ScriptLibraryTest, TheFirstFactsMakeItReadyInTheOrderOfTheStandard)
{
    begin("for (const name of ['ready', 'stateChange', 'viewableChange', 'exposureChange', 'audioVolumeChange', "
          "'sizeChange', 'error']) mraid.addEventListener(name, (...args) => note(name, ...args));");
    wait_for(R"(note["audioVolumeChange",60])");
    EXPECT_EQ(heard_since_loading(),
              (std::vector<std::string>{R"(note["stateChange","default"])", R"(note["ready"])",
                                        R"(note["exposureChange",100,{"height":523,"width":375,"x":0,"y":0},null])",
                                        R"(note["viewableChange",true])", R"(note["audioVolumeChange",60])"}));
}

TEST_F(ScriptLibraryTest, ThePageReadsTheFactsOfTheKit)
{
    begin("mraid.addEventListener('ready', () => note(mraid.getState(), mraid.isViewable(), "
          "mraid.getCurrentPosition(), mraid.getDefaultPosition(), mraid.getMaxSize(), mraid.getScreenSize(), "
          "mraid.getCurrentAppOrientation(), mraid.getLocation(), mraid.getExpandProperties(), "
          "mraid.getOrientationProperties(), mraid.getResizeProperties(), ['sms', 'tel', 'calendar', 'storePicture', "
          "'inlineVideo', 'vpaid', 'location', 'toString'].filter(mraid.supports)));");
    wait_for(R"(note["default",true,{"height":523,"width":375,"x":0,"y":255},)"
             R"({"height":523,"width":375,"x":0,"y":255},{"height":812,"width":375},{"height":812,"width":375},)"
             R"({"locked":true,"orientation":"portrait"},-1,)"
             R"({"height":812,"isModal":true,"useCustomClose":false,"width":375},)"
             R"({"allowOrientationChange":true,"forceOrientation":"none"},null,["tel","calendar","inlineVideo"]])");
}

TEST_F(ScriptLibraryTest, OnlyChangesAreReported)
{
    begin("for (const name of ['ready', 'stateChange', 'viewableChange', 'exposureChange', 'audioVolumeChange', "
          "'sizeChange']) mraid.addEventListener(name, (...args) => note(name, ...args));");
    wait_for(R"(note["audioVolumeChange",60])");
    recorder.heard.clear();
    send({{"position", NSDictionary{{"x", 0}, {"y", 100}, {"width", 375}, {"height", 523}}}});
    send({{"position", NSDictionary{{"x", 0}, {"y", 0}, {"width", 812}, {"height", 375}}}});
    send({{"exposure", NSDictionary{{"exposedPercentage", 0}, {"visibleRectangle", nullptr}}}, {"viewable", false}});
    send({{"volume", 0}});
    send({{"state", "hidden"}});
    wait_for(R"(note["exposureChange",0,null,null])");
    EXPECT_EQ(recorder.heard,
              (std::vector<std::string>{R"(note["viewableChange",false])", R"(note["audioVolumeChange",0])",
                                        R"(note["stateChange","hidden"])", R"(note["sizeChange",812,375])",
                                        R"(note["exposureChange",0,null,null])"}))
        << "the size last, and what is to be seen of it: this page is not laid out";
}

TEST_F(ScriptLibraryTest, AResizeToAnotherSizeIsReported)
{
    begin("mraid.addEventListener('sizeChange', (...args) => note('sizeChange', ...args));"
          "mraid.addEventListener('audioVolumeChange', volume => {"
          "  if (volume === 10) { dispatchEvent(new Event('resize')); note('resize'); } });");
    send({{"position", NSDictionary{{"x", 0}, {"y", 0}, {"width", 812}, {"height", 375}}}});
    send({{"position", NSDictionary{{"x", 0}, {"y", 0}, {"width", 400}, {"height", 300}}}});
    send({{"volume", 10}});
    wait_for(R"(note["sizeChange",400,300])");
    EXPECT_EQ(heard_since_loading(), (std::vector<std::string>{"note[\"resize\"]", R"(note["sizeChange",400,300])"}));
}

TEST_F(ScriptLibraryTest, AFractionOfAPointIsNoNewSize)
{
    begin("for (const name of ['sizeChange', 'audioVolumeChange'])"
          "  mraid.addEventListener(name, (...args) => note(name, ...args));");
    wait_for(R"(note["audioVolumeChange",60])");
    send({{"position", NSDictionary{{"x", 0.4}, {"y", 254.6}, {"width", 375.4}, {"height", 522.6}}}});
    send({{"volume", 10}});
    wait_for(R"(note["audioVolumeChange",10])");
    EXPECT_EQ(recorder.heard.back(), R"(note["audioVolumeChange",10])");
    EXPECT_EQ(recorder.heard.size(), 4U);
}

TEST_F(ScriptLibraryTest, AListenerAddedDuringAnEventIsCalledOnce)
{
    begin("const hear = name => mraid.addEventListener(name, (...args) => note(name, args.length));"
          "mraid.addEventListener('stateChange', () => hear('ready'));"
          "mraid.addEventListener('ready', () => { hear('exposureChange'); hear('audioVolumeChange');"
          "  setTimeout(() => note('end'), 50); });");
    wait_for("note[\"end\"]");
    EXPECT_EQ(heard_since_loading(), (std::vector<std::string>{R"(note["ready",0])", R"(note["exposureChange",3])",
                                                               R"(note["audioVolumeChange",1])", "note[\"end\"]"}));
}

TEST_F(ScriptLibraryTest, APageMayRedefineTheNames)
{
    load_script("", "<script>const mraid = window.mraid, qoroPlayer = 1; note = 0;</script>"
                    "<script>qoroBridge(JSON.stringify("
                    "  {command: 'taken', args: [mraid.getVersion(), qoroPlayer]}), () => {});</script>");
    wait_for(R"(taken["3.0",1])");
}

TEST_F(ScriptLibraryTest, InvalidArgumentsAreRefusedAndNotSent)
{
    begin("const said = promise => promise.catch(error => error.message);"
          "Promise.all([said(qoroPlayer.setVideoSeekToTime('x')), said(qoroPlayer.setVideoSeekToTime(NaN)),"
          "  said(qoroPlayer.setVideoSeekToTime()), said(qoroPlayer.changeOrientation('up')),"
          "  said(qoroPlayer.playNextVideo()), said(qoroPlayer.playNextVideo([]))])"
          "  .then(all => note(...all));");
    wait_for(R"(note["The time is a number of seconds.","The time is a number of seconds.",)"
             R"("The time is a number of seconds.","An orientation is portrait or landscape.",)"
             R"("The next video is a record.","The next video is a record."])");
    EXPECT_EQ(heard_since_loading().size(), 1U);
}

TEST_F(ScriptLibraryTest, InvalidPropertiesAreAnErrorAndNotStored)
{
    begin("mraid.addEventListener('error', (message, action) => note(action));"
          "mraid.setOrientationProperties({ forceOrientation: 'portrait' });" // not ready yet
          "mraid.addEventListener('ready', () => {"
          "  mraid.setOrientationProperties(null);"
          "  mraid.setExpandProperties(null);"
          "  mraid.setExpandProperties({ width: 10, height: -5 });"
          "  mraid.setResizeProperties({ width: 10, height: 10, customClosePosition: 'nowhere' });"
          "  note(mraid.getOrientationProperties(), mraid.getExpandProperties().height, mraid.getResizeProperties());"
          "});");
    wait_for(R"(note[{"allowOrientationChange":true,"forceOrientation":"none"},812,null])");
    wait_for("note[\"setResizeProperties\"]");
    EXPECT_EQ(recorder.count("note[\"setOrientationProperties\"]"), 2);
    EXPECT_EQ(recorder.count("note[\"setExpandProperties\"]"), 2);
    EXPECT_EQ(recorder.count("note[\"setResizeProperties\"]"), 1);
    EXPECT_EQ(std::count_if(recorder.heard.begin(), recorder.heard.end(),
                            [](const std::string& line) { return line.starts_with("mraid."); }),
              0)
        << "nothing was sent";
}

TEST_F(ScriptLibraryTest, AnAddressMayBeAUrlObject)
{
    begin("mraid.addEventListener('ready', () => mraid.open(new URL('https://shop.example/a?b')));");
    wait_for(R"(mraid.open["https://shop.example/a?b"])");
}

TEST_F(ScriptLibraryTest, ACreativeThatCannotGetReadyMayUnload)
{
    load_script("mraid.unload();");
    wait_for("mraid.unload[]");
}

TEST_F(ScriptLibraryTest, NullRemovesEveryListenerOfAnEvent)
{
    begin("mraid.addEventListener('error', message => note(message));"
          "for (const n of [1, 2]) mraid.addEventListener('ready', () => note(n));"
          "mraid.removeEventListener('ready', null);"
          "mraid.addEventListener('ready', () => note('end'));");
    wait_for("note[\"end\"]");
    EXPECT_EQ(heard_since_loading(), std::vector<std::string>{"note[\"end\"]"});
}

TEST_F(ScriptLibraryTest, ALateListenerReceivesTheCurrentStateOnce)
{
    begin("mraid.addEventListener('ready', () => setTimeout(() => {"
          "const late = (...args) => note('late', ...args);"
          "for (const name of ['ready', 'exposureChange', 'audioVolumeChange', 'stateChange', 'viewableChange'])"
          "  mraid.addEventListener(name, late);"
          "mraid.addEventListener('ready', late); setTimeout(() => note('end'), 50); }));");
    wait_for("note[\"end\"]");
    EXPECT_EQ(
        heard_since_loading(),
        (std::vector<std::string>{R"(note["late"])", R"(note["late",100,{"height":523,"width":375,"x":0,"y":0},null])",
                                  R"(note["late",60])", R"(note["end"])"}));
}

TEST_F(ScriptLibraryTest, ARemovedListenerOfTheAdReceivesNothingMore)
{
    begin("const gone = () => note('gone'); mraid.addEventListener('stateChange', gone);"
          "mraid.removeEventListener('stateChange', gone);"
          "mraid.addEventListener('viewableChange', gone); mraid.removeEventListener('viewableChange');"
          "mraid.addEventListener('audioVolumeChange', () => note('stays'));");
    wait_for("note[\"stays\"]");
    EXPECT_FALSE(recorder.has("note[\"gone\"]"));
}

TEST_F(ScriptLibraryTest, EveryRequestCarriesItsArguments)
{
    begin("mraid.addEventListener('ready', () => { mraid.open('https://shop/'); mraid.playVideo('https://v/');"
          "mraid.useCustomClose(true); mraid.createCalendarEvent({description: 'party', start: new Date(0)});"
          "mraid.setOrientationProperties({forceOrientation: 'landscape'}); mraid.storePicture('https://p/');"
          "mraid.expand(); mraid.resize(); mraid.unload(); mraid.close(); });");
    wait_for("mraid.close[]");
    EXPECT_EQ(heard_since_loading(),
              (std::vector<std::string>{
                  R"(mraid.open["https://shop/"])", R"(mraid.playVideo["https://v/"])", "mraid.useCustomClose[true]",
                  R"(mraid.createCalendarEvent[{"description":"party","start":"1970-01-01T00:00:00.000Z"}])",
                  R"(mraid.setOrientationProperties[{"allowOrientationChange":true,"forceOrientation":"landscape"}])",
                  R"(mraid.storePicture["https://p/"])", "mraid.expand[null]", "mraid.resize[]", "mraid.unload[]",
                  "mraid.close[]"}));
}

TEST_F(ScriptLibraryTest, ARefusalByTheKitIsAnErrorEventWithTheAction)
{
    recorder.answer = [](const ScriptMessage& message) {
        return message.command == "note" ? ScriptAnswer{} : ScriptAnswer{"no touch", nullptr};
    };
    begin("mraid.addEventListener('error', (...args) => note('error', ...args));"
          "mraid.addEventListener('ready', () => mraid.open('https://shop/'));");
    wait_for(R"(note["error","no touch","open"])");
}

TEST_F(ScriptLibraryTest, ACalendarEventMayBeJsonAndOtherTextsAreSentUnchanged)
{
    begin(R"(mraid.addEventListener('ready', () => {
                 mraid.createCalendarEvent('{"description":"party","start":"2027-03-24"}');
                 mraid.createCalendarEvent('{"description":'); note('end'); });)");
    wait_for("note[\"end\"]");
    EXPECT_EQ(heard_since_loading(),
              (std::vector<std::string>{R"(mraid.createCalendarEvent[{"description":"party","start":"2027-03-24"}])",
                                        R"(mraid.createCalendarEvent["{\"description\":"])", "note[\"end\"]"}));
}

TEST_F(ScriptLibraryTest, ALaterRefusalByTheKitIsOnlyAnErrorEvent)
{
    begin("for (const name of ['ready', 'stateChange', 'viewableChange', 'exposureChange', 'audioVolumeChange', "
          "'sizeChange', 'error']) mraid.addEventListener(name, (...args) => note(name, ...args));");
    wait_for(R"(note["audioVolumeChange",60])");
    recorder.heard.clear();

    send({{"error", NSDictionary{{"message", "start is missing"}, {"action", "createCalendarEvent"}}}});
    wait_for(R"(note["error","start is missing","createCalendarEvent"])");

    EXPECT_EQ(recorder.heard.size(), 1U);
}

TEST_F(ScriptLibraryTest, ARefusalByTheLibraryIsAnErrorEventAndIsNotSent)
{
    load_script("mraid.addEventListener('error', (message, action) => note('error', action));"
                "mraid.open('https://shop/'); mraid.addEventListener('shake', () => {});"
                "mraid.addEventListener('ready', 7); mraid.removeEventListener('ready', () => {});"
                "mraid.setOrientationProperties({forceOrientation: 'sideways'});"
                "mraid.setResizeProperties({width: '100'}); setTimeout(() => note('end'));");
    wait_for("note[\"end\"]");
    std::erase(recorder.heard, "start");
    std::erase(recorder.heard, "finish");
    EXPECT_EQ(recorder.heard,
              (std::vector<std::string>{R"(note["error","open"])", R"(note["error","addEventListener"])",
                                        R"(note["error","addEventListener"])", R"(note["error","removeEventListener"])",
                                        R"(note["error","setOrientationProperties"])",
                                        R"(note["error","setResizeProperties"])", R"(note["end"])"}));
}

TEST_F(ScriptLibraryTest, AnErrorEventReachesAListenerThatIsSetAfterTheCall)
{
    recorder.answer = [](const ScriptMessage& message) {
        return message.command == "note" ? ScriptAnswer{} : ScriptAnswer{"an interstitial does not", nullptr};
    };
    begin("mraid.setResizeProperties(null);" // refused by the library
          "mraid.addEventListener('error', (...args) => note(...args));"
          "mraid.addEventListener('ready', () => {"
          "  mraid.expand(); mraid.resize();" // refused by the kit
          "  mraid.addEventListener('error', (message, action) => note('late', action));"
          "});");
    wait_for(R"(note["width and height are numbers.","setResizeProperties"])");
    wait_for(R"(note["late","expand"])");
    wait_for(R"(note["late","resize"])");
}

TEST_F(ScriptLibraryTest, PropertiesThatAreSetAreReadBack)
{
    load_script("mraid.setExpandProperties({width: 320, isModal: false, useCustomClose: true});"
                "mraid.setResizeProperties({width: 100, height: 50, offsetX: 5, offsetY: 6, allowOffscreen: false});"
                "note(mraid.getExpandProperties(), mraid.getResizeProperties());");
    wait_for(R"(note[{"height":0,"isModal":true,"useCustomClose":true,"width":320},)"
             R"({"allowOffscreen":false,"customClosePosition":"top-right","height":50,"offsetX":5,)"
             R"("offsetY":6,"width":100}])");
}

TEST_F(ScriptLibraryTest, APageThatReplacesEveryBuiltInKeepsItsAd)
{
    recorder.answer = [](const ScriptMessage& message) {
        return message.command == "mraid.open" ? ScriptAnswer{"no touch", nullptr} : ScriptAnswer{};
    };
    begin(R"(
        const post = qoroBridge;
        const { stringify } = JSON;
        const report = (...args) => {
            args.toJSON = undefined;
            post(stringify({ __proto__: null, command: 'note', args }), () => {});
        };
        const { ownKeys } = Reflect;
        const { defineProperty } = Object;
        const throws = () => { throw 'replaced'; };
        const trap = { get: throws, set: throws, configurable: true };
        const parts = [String, Number, Boolean, Promise, JSON, Reflect, Date, Math, Symbol, Map, Set, Error, Array,
            Object, String.prototype, Promise.prototype, Date.prototype, Error.prototype, Function.prototype,
            Array.prototype, Object.prototype];
        const names = parts.map(part => ownKeys(part));
        defineProperty(Array.prototype, 0, trap);
        defineProperty(Array.prototype, 1, trap);
        defineProperty(Object.prototype, 'state', trap);
        for (let i = 0; i < parts.length; ++i)
            for (let n = 0; n < names[i].length; ++n)
                try { parts[i][names[i][n]] = throws; } catch {}
        Object.prototype.toJSON = Array.prototype.toJSON = Object.prototype.get = Object.prototype.set = throws;
        Object = Array = Promise = JSON = Reflect = Error = Date = setTimeout = isFinite = null;
        window.webkit = window.qoroBridge = null;

        mraid.addEventListener('error', (message, action) => report('error', message, action));
        mraid.addEventListener('audioVolumeChange', volume => {
            report('volume', volume, mraid.getState(), mraid.getCurrentPosition().y);
            mraid.open('https://shop/');
            mraid.createCalendarEvent({ description: 'party', reminder: [1, 2] });
            mraid.createCalendarEvent('{"description": "as text"}');
            qoroPlayer.setVideoSeekToTime(2.5);
        });)");
    wait_for(R"(note["error","no touch","open"])");
    EXPECT_TRUE(recorder.has(R"(note["volume",60,"default",255])"));
    EXPECT_TRUE(recorder.has(R"(mraid.open["https://shop/"])"));
    EXPECT_TRUE(recorder.has(R"(mraid.createCalendarEvent[{"description":"party","reminder":[1,2]}])"));
    EXPECT_TRUE(recorder.has(R"(mraid.createCalendarEvent[{"description":"as text"}])"));
    EXPECT_TRUE(recorder.has("setVideoSeekToTime[2.5]"));
}

TEST_F(ScriptLibraryTest, AListenerOfTheAdThatThrowsDoesNotStopTheOthers)
{
    begin("mraid.addEventListener('ready', () => { throw new Error('mine'); });"
          "mraid.addEventListener('ready', () => note('heard'));"
          "addEventListener('error', () => note('error reported'));");
    wait_for("note[\"heard\"]");
    wait_for("note[\"error reported\"]");
}

TEST_F(ScriptLibraryTest, AnErrorInAListenerHasItsTextAndItsPlaceInThePage)
{
    begin("mraid.addEventListener('ready', () => { throw new RangeError('mine'); });"
          "addEventListener('error', ({ message, filename, lineno, error }) =>"
          "  note(message, filename === location.href, lineno > 0, error instanceof RangeError));");
    wait_for("note[\"RangeError: mine\",true,true,true]");
}

TEST_F(ScriptLibraryTest, AListenerMayRemoveAllOfItsEventDuringTheCall)
{
    begin("mraid.addEventListener('stateChange', () => mraid.removeEventListener('stateChange'));"
          "mraid.addEventListener('stateChange', () => note('removed, and called all the same'));"
          "mraid.addEventListener('ready', () => note('ready'));");
    wait_for("note[\"ready\"]");
    EXPECT_FALSE(recorder.has("note[\"removed, and called all the same\"]"));
}

TEST_F(ScriptLibraryTest, ACommandThatTheAdIgnoresRejectsItsPromiseWithTheReason)
{
    recorder.answer = [](const ScriptMessage& message) {
        return message.command == "setVideoPlay" ? ScriptAnswer{"the video is hidden behind the page", nullptr}
                                                 : ScriptAnswer{};
    };
    begin("qoroPlayer.setVideoPlay().catch(refusal => qoroPlayer.replay().then(() => note(refusal.message)));");
    wait_for(R"(note["the video is hidden behind the page"])");
    EXPECT_TRUE(recorder.has("replay[]"));
}

TEST_F(ScriptLibraryTest, ThePageReadsWhereTheControlsAre)
{
    recorder.answer = [](const ScriptMessage& message) {
        return message.command == "getControlRects"
                   ? ScriptAnswer{nullptr, NSArray{NSDictionary{{"name", "btnClose"}, {"x", 1.5}}}}
                   : ScriptAnswer{};
    };
    begin("qoroPlayer.getControlRects().then(note);");
    wait_for(R"(note[[{"name":"btnClose","x":1.5}]])");
}

TEST_F(ScriptLibraryTest, ThePageCannotReplaceTheAd)
{
    load_script("try { mraid = 1; } catch {} try { mraid.close = 1; } catch {} try { MRAID_ENV.ifa = 'x'; } catch {}"
                "note(typeof mraid.close, MRAID_ENV.ifa)");
    wait_for(R"(note["function",""])");
}

} // namespace
} // namespace qoro::test
