#pragma once

#include "kit/RefusalLog.h"
#include "platform/Foundation.h"
#include "platform/UIKit.h"

#include <functional>
#include <memory>
#include <string>

namespace qoro
{

/// A web page, or a text, that fills a view, with the surrounding controls. Stays upright as the device is turned, and
/// always has a close button.
class PageScreen : public Object, private WebListener
{
public:
    enum class Bar {
        /// No bar; the close button overlays the page.
        None,
        /// Page title and close button.
        Title,
        /// Back, forward, security indicator, address, reload and close button.
        Navigation,
    };

    struct Style {
        Bar bar = Bar::None;
        /// Shows a progress line during loads.
        bool progress = false;
        /// The page draws its own close control; the touch area of the close button remains, invisible.
        bool close_unseen = false;
        /// Whether it can show pages; if false, it shows a text only, and needs no web engine.
        bool pages = true;
    };

    /// Fills a view and follows its size. A view must not be filled by two screens at once.
    /// @param on_close called inside the touch when the viewer closes the screen; must remove it
    static std::shared_ptr<PageScreen> create(const UIView& filled, const Style& style, std::function<void()> on_close);
    ~PageScreen() override;
    PageScreen(const PageScreen&) = delete;
    PageScreen& operator=(const PageScreen&) = delete;

    /// Loads an http or https address; for any other, or null, shows the viewer an error.
    void show_address(const NSURL& address);
    /// Loads a page from its source; null shows nothing.
    void show_html(const NSString& html);
    /// Shows a text, on a screen without pages.
    /// @param title for a bar that shows the title
    void show_text(const NSString& title, const NSString& text);
    /// Handles the viewer closing the screen.
    void close();

    /// The topmost visible screen; null without one.
    static std::shared_ptr<PageScreen> topmost(Platform& platform);

private:
    PageScreen(const UIView& filled, const Style& style, std::function<void()> on_close);

    void did_start_load() override;
    void did_finish_load() override;
    bool should_start_load(const NSURL& address, int navigation_type) override;
    ScriptAnswer message(const ScriptMessage& message) override;
    void did_fail_load(const std::string& reason) override;
    void page_state_changed() override;
    void refused(const std::string& what, const std::string& detail) override;
    void died(const std::string& reason) override;

    void build();
    void observe_turns();
    void go_back();
    void go_forward();
    void reload();
    void turned(const NSNotification& notification);
    void follow();
    void lay_out();
    void update();
    void show_in_field(const NSURL& address);
    void show_notice(const char* text);
    bool is_seen() const;

    Platform& platform_;
    const UIView filled_;
    const Style style_;
    const std::function<void()> on_close_;
    RefusalLog refusals_;
    bool loading_ = false;
    /// Title of the text; null without one.
    NSString title_;
    /// Rotation of the device relative to the viewer, in radians, clockwise.
    double turn_ = 0;

    UIView upright_; // contains all other views
    UIView bar_;
    UIView bar_edge_;
    UIView address_field_;
    UIImageView lock_;
    UILabel text_; // the address or the title
    UIButton back_;
    UIButton forward_;
    UIButton reload_;
    UIButton close_;
    UIWebView page_; // null on a screen without pages
    UIView notice_;
    UILabel notice_text_;
    UIView progress_;
};

} // namespace qoro
