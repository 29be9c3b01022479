#include "tests/desktop/web/PageTest.h"

// The consent in a page: qoroPlayer.getConsent(), and the functions of the standards. The test answers as the kit does.

namespace qoro::test
{
namespace
{

class ConsentPageTest : public PageTest
{
protected:
    /// Loads a page whose body is a script, while the host supplies these strings.
    void load_with(NSDictionary consent, const std::string& script, const std::string& head = "")
    {
        recorder.answer = [consent = std::move(consent)](const ScriptMessage& message) {
            return message.command == "getConsent" ? ScriptAnswer{nullptr, consent} : ScriptAnswer{};
        };
        load_script("const tell = name => (...args) => note(name, ...args);" + script, head);
    }

    const NSDictionary all{{"tcf", "CPXYZ"},
                           {"gdprApplies", true},
                           {"usPrivacy", "1YNN"},
                           {"gpp", "DBAA"},
                           {"gppSections", NSArray{Value(2), Value(6)}}};
    const NSDictionary none{{"tcf", nullptr},
                            {"gdprApplies", nullptr},
                            {"usPrivacy", nullptr},
                            {"gpp", nullptr},
                            {"gppSections", NSArray()}};
};

TEST_F(ConsentPageTest, TheLibraryReturnsTheStrings)
{
    load_with(all, "qoroPlayer.getConsent().then(tell('consent'));");
    wait_for(
        R"(note["consent",{"gdprApplies":true,"gpp":"DBAA","gppSections":[2,6],"tcf":"CPXYZ","usPrivacy":"1YNN"}])");
}

TEST_F(ConsentPageTest, TheTcfApiHandsOverTheString)
{
    load_with(all, "__tcfapi('ping', 2, tell('ping')); __tcfapi('getTCData', 2, tell('data'));"
                   "__tcfapi('addEventListener', 2, (data, success) => { note('added', data, success);"
                   "  __tcfapi('removeEventListener', 2, tell('removed'), data.listenerId);"
                   "  __tcfapi('removeEventListener', 2, tell('again'), data.listenerId); });"
                   "__tcfapi('getVendorList', 2, tell('other')); __tcfapi('getTCData', 1, tell('version'));");
    wait_for(R"(note["again",false])");
    EXPECT_TRUE(recorder.has(R"(note["ping",{"apiVersion":"2","cmpLoaded":true,"cmpStatus":"loaded",)"
                             R"("displayStatus":"disabled","gdprApplies":true},true])"));
    EXPECT_TRUE(recorder.has(R"(note["data",{"cmpStatus":"loaded","eventStatus":"tcloaded","gdprApplies":true,)"
                             R"("tcString":"CPXYZ"},true])"));
    EXPECT_TRUE(recorder.has(R"(note["added",{"cmpStatus":"loaded","eventStatus":"tcloaded","gdprApplies":true,)"
                             R"("listenerId":1,"tcString":"CPXYZ"},true])"));
    EXPECT_TRUE(recorder.has(R"(note["removed",true])"));
    EXPECT_TRUE(recorder.has(R"(note["other",null,false])"));
    EXPECT_TRUE(recorder.has(R"(note["version",null,false])"));
}

TEST_F(ConsentPageTest, TheUsPrivacyApiHandsOverTheString)
{
    load_with(all, "__uspapi('getUSPData', 1, tell('usp')); __uspapi('getUSPData', 2, tell('version'));"
                   "__uspapi('other', 1, tell('other'));");
    wait_for(R"(note["other",null,false])");
    EXPECT_TRUE(recorder.has(R"(note["usp",{"uspString":"1YNN","version":1},true])"));
    EXPECT_TRUE(recorder.has(R"(note["version",null,false])"));
}

TEST_F(ConsentPageTest, TheGppApiHandsOverTheString)
{
    load_with(all,
              "__gpp('ping', (ping, success) => note('ping', ping.gppString, ping.applicableSections, "
              "  ping.signalStatus, ping.gppVersion, success));"
              "__gpp('addEventListener', (event, success) => { note('event', event.eventName, event.listenerId, "
              "  event.pingData.gppString, success);"
              "  __gpp('removeEventListener', (gone, done) => note('gone', gone.data, done), event.listenerId); });"
              "__gpp('getField', tell('other'), 'tcfeuv2.LastUpdated');");
    wait_for(R"(note["gone",true,true])");
    EXPECT_TRUE(recorder.has(R"(note["ping","DBAA",[2,6],"ready","1.1",true])"));
    EXPECT_TRUE(recorder.has(R"(note["event","listenerRegistered",1,"DBAA",true])"));
    EXPECT_TRUE(recorder.has(R"(note["other",null,false])"));
}

TEST_F(ConsentPageTest, WithoutStringsNothingIsClaimed)
{
    load_with(none, "__tcfapi('getTCData', 2, tell('tcf')); __tcfapi('addEventListener', 2, tell('listener'));"
                    "__uspapi('getUSPData', 1, tell('usp')); __gpp('ping', tell('gpp'));");
    wait_for(R"(note["gpp",null,false])");
    for (const char* name : {"tcf", "listener", "usp"})
        EXPECT_TRUE(recorder.has("note[\"" + std::string(name) + "\",null,false]")) << name;
}

TEST_F(ConsentPageTest, GdprThatDoesNotApplyNeedsNoString)
{
    load_with({{"tcf", nullptr},
               {"gdprApplies", false},
               {"usPrivacy", nullptr},
               {"gpp", nullptr},
               {"gppSections", NSArray()}},
              "__tcfapi('getTCData', 2, tell('tcf'));");
    wait_for(R"(note["tcf",{"cmpStatus":"loaded","eventStatus":"tcloaded","gdprApplies":false},true])");
}

TEST_F(ConsentPageTest, AFunctionOfThePageRemainsAndABrokenCallbackIsReported)
{
    load_with(all, "__tcfapi(); __uspapi('getUSPData', 1); __gpp('ping');"
                   "addEventListener('error', event => note('error', event.message));"
                   "__uspapi('getUSPData', 1, () => { throw new Error('mine'); });");
    // The library has an origin of its own: the page sees that there was an error, not which.
    wait_for(R"(note["error","Script error."])");
    load("<!DOCTYPE html><html><head><script>function __gpp() { return 'own'; }</script>"
         "<script src='kit://script.js'></script></head><body><script>"
         "qoroBridge(JSON.stringify({command: 'note', args: [__gpp(), typeof __uspapi]}), () => {});"
         "</script></body></html>");
    wait_for(R"(note["own","function"])");
}

TEST_F(ConsentPageTest, APageThatReplacesBuiltInsStillReceivesThem)
{
    load_with(all,
              "const throws = () => { throw 'replaced'; };"
              "Promise.prototype.then = throws; Object.defineProperty(Object.prototype, 'pingData', {set: throws});"
              "__gpp('addEventListener', (event, success) => note('event', event.pingData.gppString, success));");
    wait_for(R"(note["event","DBAA",true])");
}

} // namespace
} // namespace qoro::test
