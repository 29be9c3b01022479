#pragma once

#include "kit/RefusalLog.h"
#include "platform/Foundation.h"
#include "platform/UIKit.h"

#include <functional>
#include <memory>
#include <string>

namespace qoro
{

/// A web page that fills a view, with what the viewer needs around it. It stands upright as the device is held, follows
/// it when it is turned, and can always be left.
class PageScreen : public Object, private WebListener
{
public:
    enum class Bar {
        /// None; the way out lies over the page.
        None,
        /// The page's title, and the way out.
        Title,
        /// Back, forward, the address and whether its connection is safe, reload, and the way out.
        Navigation,
    };

    struct Style {
        Bar bar = Bar::None;
        /// A line that grows while something is on its way.
        bool progress = false;
        /// The page draws its own sign for the way out; what the viewer touches stays, unseen.
        bool close_unseen = false;
    };

    /// Fills a view, which no other screen may fill at the same time, and follows its size.
    /// @param on_close the viewer leaves; called inside the touch. It takes the screen away
    static std::shared_ptr<PageScreen> create(const UIView& filled, const Style& style, std::function<void()> on_close);
    ~PageScreen() override;
    PageScreen(const PageScreen&) = delete;
    PageScreen& operator=(const PageScreen&) = delete;

    /// Shows what stands under an address; one that is neither http nor https, or null, is told to the viewer.
    void show_address(const NSURL& address);
    void show_html(const NSString& html);
    /// The viewer leaves.
    void close();

    /// The screen that the viewer sees above all others; null when none is to be seen.
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
    void show_in_field(const std::string& address);
    void tell_viewer(const char* text);
    bool is_seen() const;

    Platform& platform_;
    const UIView filled_;
    const Style style_;
    const std::function<void()> on_close_;
    RefusalLog refusals_;
    bool loading_ = false;
    /// How the device is turned to its viewer, clockwise.
    double turn_ = 0;

    UIView upright_; // holds everything else
    UIView bar_;
    UIView bar_edge_;
    UIView address_field_;
    UIImageView lock_;
    UILabel text_; // the address or the title
    UIButton back_;
    UIButton forward_;
    UIButton reload_;
    UIButton close_;
    UIWebView page_;
    UIView notice_;
    UILabel notice_text_;
    UIView progress_;
};

} // namespace qoro
