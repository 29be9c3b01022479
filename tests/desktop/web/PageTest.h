#pragma once

#include "desktop/screen/WidgetSource.h"
#include "desktop/web/ScriptLibrary.h"
#include "desktop/web/ValueJson.h"
#include "desktop/web/WebKitEngineFactory.h"
#include "tests/desktop/support/BarePlatform.h"
#include "tests/desktop/support/Desktop.h"

#include <gtest/gtest.h>
#include <libsoup/soup.h>
#include <webkit/webkit.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace qoro::test
{

/// A local HTTP server that serves `pages`. Answers other paths with 404, and never answers "/never".
class LocalServer
{
public:
    LocalServer() : server_(soup_server_new(nullptr, nullptr))
    {
        soup_server_listen_local(server_, 0, static_cast<SoupServerListenOptions>(0), nullptr);
        soup_server_add_handler(server_, nullptr, answer, this, nullptr);
        GSList* addresses = soup_server_get_uris(server_);
        char* text = g_uri_to_string(static_cast<GUri*>(addresses->data));
        base_ = text;
        g_free(text);
        g_slist_free_full(addresses, [](void* uri) { g_uri_unref(static_cast<GUri*>(uri)); });
    }
    ~LocalServer()
    {
        soup_server_disconnect(server_);
        g_object_unref(server_);
    }

    const std::string& base() const { return base_; }
    std::map<std::string, std::pair<std::string, std::string>> pages; // path → content type and body
    std::vector<std::string> asked;

private:
    static void answer(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, void* data)
    {
        auto* self = static_cast<LocalServer*>(data);
        self->asked.emplace_back(path);
        if (std::string(path) == "/never") {
            soup_server_message_pause(message);
            return;
        }
        const auto page = self->pages.find(path);
        soup_server_message_set_status(message, page == self->pages.end() ? 404 : 200, nullptr);
        if (page != self->pages.end())
            soup_server_message_set_response(message, page->second.first.c_str(), SOUP_MEMORY_COPY,
                                             page->second.second.data(), page->second.second.size());
    }

    SoupServer* server_;
    std::string base_;
};

/// A copy with all dictionaries sorted by key, because WebKit does not preserve their order.
inline Value in_order(const Value& value)
{
    if (value.is_array()) {
        std::vector<Value> entries;
        for (const Value& entry : value.array())
            entries.push_back(in_order(entry));
        return NSArray(std::move(entries));
    }
    if (!value.is_dictionary())
        return value;
    std::vector<std::string> keys = value.dictionary().allKeys();
    std::sort(keys.begin(), keys.end());
    NSDictionary ordered = NSDictionary::dictionary();
    for (const std::string& key : keys)
        ordered.setObject(in_order(value.dictionary()[key]), key);
    return ordered;
}

/// Records all notifications, and answers messages with `answer`.
struct Recorder : WebListener {
    void did_start_load() override { heard.emplace_back("start"); }
    void did_finish_load() override { heard.emplace_back("finish"); }
    bool should_start_load(const NSURL& address, int type) override
    {
        heard.push_back("ask " + std::to_string(type) + " " + address.absoluteString().text());
        return allow_loads;
    }
    ScriptAnswer message(const ScriptMessage& message) override
    {
        if (message.command == "mraid.load") { // sent by every page with the library
            mraid = message.arguments;
            return {};
        }
        const std::string line = message.command + json_of(in_order(message.arguments));
        heard.push_back(line);
        return answer(message);
    }
    void did_fail_load(const std::string&) override { heard.emplace_back("fail"); }
    void refused(const std::string& what, const std::string& detail) override
    {
        refusals.push_back(what + " " + detail);
    }
    void died(const std::string& reason) override { heard.push_back("died: " + reason); }
    void responsiveness_changed(bool responds) override { heard.emplace_back(responds ? "answers" : "silent"); }

    bool has(const std::string& line) const { return std::find(heard.begin(), heard.end(), line) != heard.end(); }
    long count(const std::string& line) const { return std::count(heard.begin(), heard.end(), line); }

    std::vector<std::string> heard;
    /// The requests that the engine refused the page.
    std::vector<std::string> refusals;
    /// The listeners of the page's `mraid` object; null before its first "mraid.load" message.
    NSArray mraid;
    bool allow_loads = false;
    std::function<ScriptAnswer(const ScriptMessage&)> answer = [](const ScriptMessage&) { return ScriptAnswer{}; };
};

/// The view in which an engine shows its pages; null before the first load has begun.
inline WebKitWebView* web_view_of(WebEngine& engine)
{
    return WEBKIT_WEB_VIEW(gtk_widget_get_first_child(engine.widget_source()->widget()));
}

/// A page in the real engine, with a recorder as its listener.
class PageTest : public testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(start_desktop()) << "these tests need a display"; }

    void load(const std::string& html) { engine->load_html(html, NSURL::URLWithString(server.base())); }

    /// Loads a page with the library whose body is a script. note(…) in the script sends a line to the recorder.
    void load_script(const std::string& script, const std::string& head = "")
    {
        load("<!DOCTYPE html><html><head><script src='kit://script.js'></script>" + head +
             "</head><body><script>const note = (...args) => "
             "qoroBridge(JSON.stringify({command: 'note', args}), () => {});" +
             script + "</script></body></html>");
    }

    /// Runs the main loop until the recorder has received a line.
    void wait_for(const std::string& line)
    {
        const bool came = platform.loop().run_until([&] { return recorder.has(line); }, 90);
        std::ostringstream all;
        for (const std::string& heard : recorder.heard)
            all << "  " << heard << "\n";
        ASSERT_TRUE(came) << "never heard: " << line << "\nheard:\n" << all.str();
    }

    BarePlatform platform;
    LocalServer server;
    Recorder recorder;
    WebKitEngineFactory factory{platform};
    std::unique_ptr<WebEngine> engine = factory.make_web_engine(recorder, PageKind::Creative);
};

} // namespace qoro::test
