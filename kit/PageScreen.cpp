#include "kit/PageScreen.h"

#include "kit/ScreenTexts.h"
#include "kit/WebText.h"
#include "views/HeldTurn.h"
#include "views/ViewNode.h"

#include <algorithm>
#include <array>

namespace qoro
{

namespace
{

// Points.
constexpr double BarHeight = 48;
/// Width and height of a button: the size of a comfortable touch target.
constexpr double Touch = 48;
/// Width and height of the invisible close button at the top right of a page that draws its own.
constexpr double UnseenTouch = 50;
constexpr double Edge = 1;
constexpr double Margin = 6;
constexpr double FieldHeight = 34;
constexpr double LockWidth = 26;
constexpr double ProgressHeight = 3;
/// Initial fraction of the progress line; keeps it visible before the first estimate arrives.
constexpr double LeastProgress = 0.05;
constexpr double NoticeMargin = 32;

constexpr double AddressSize = 15;
constexpr double TitleSize = 17;
constexpr double NoticeSize = 16;

/// NSTextAlignmentLeft
constexpr int AtLeft = 0;
/// NSTextAlignmentCenter
constexpr int Centered = 1;
/// NSLineBreakByTruncatingHead
constexpr int CutAtStart = 3;
/// NSLineBreakByTruncatingTail
constexpr int CutAtEnd = 4;
/// UIWebViewNavigationTypeLinkClicked
constexpr int LinkFollowed = 0;

UIColor gray(double brightness)
{
    return UIColor::colorWithRed(brightness, brightness, brightness, 1);
}

const UIColor BarColor = gray(0.97);
const UIColor EdgeColor = gray(0.8);
const UIColor FieldColor = gray(0.9);
const UIColor InkColor = gray(0.13);
const UIColor FaintColor = gray(0.72);
const UIColor ProgressColor = UIColor::colorWithRed(0.1, 0.45, 0.9, 1);

/// Schemes that only the engine or this device's disk can resolve.
constexpr std::array<std::string_view, 7> NeverHandedOn{"", "about", "blob", "data", "file", "javascript", "kit"};
/// Schemes of frames that a page generates.
constexpr std::array<std::string_view, 3> MadeUpByThePage{"about", "blob", "data"};

template <typename Names>
bool contains(const Names& names, std::string_view name)
{
    return std::ranges::find(names, name) != names.end();
}

/// The screens of a platform, oldest first.
struct PageScreens {
    std::vector<std::weak_ptr<PageScreen>> screens;
};

void set_symbol(const UIView& view, Symbol symbol, const UIColor& color)
{
    ViewNode& node = *view.node();
    if (node.symbol == symbol && node.text_color == color)
        return;
    node.symbol = symbol;
    node.text_color = color;
    node.changed();
}

/// Enables or disables a button.
void set_usable(const UIButton& button, Symbol symbol, bool usable)
{
    set_symbol(button, symbol, usable ? InkColor : FaintColor);
    button.setUserInteractionEnabled(usable);
}

UIView plain(const UIColor& color, const UIView& parent)
{
    const UIView view = UIView::create();
    view.setBackgroundColor(color);
    parent.addSubview(view);
    return view;
}

UILabel label(double size, const UIColor& color, const UIView& parent)
{
    const UILabel label = UILabel::create();
    label.setFont({"Arial", size});
    label.setTextColor(color);
    parent.addSubview(label);
    return label;
}

} // namespace

std::shared_ptr<PageScreen> PageScreen::create(const UIView& filled, const Style& style, std::function<void()> on_close)
{
    const std::shared_ptr<PageScreen> screen(new PageScreen(filled, style, std::move(on_close)));
    screen->build();
    screen->observe_turns();
    screen->lay_out();
    screen->update();
    auto& screens = screen->platform_.shared<PageScreens>().screens;
    std::erase_if(screens, [](const auto& each) { return each.expired(); });
    screens.push_back(screen);
    return screen;
}

PageScreen::PageScreen(const UIView& filled, const Style& style, std::function<void()> on_close)
    : platform_(Platform::current()), filled_(filled), style_(style), on_close_(std::move(on_close))
{
}

PageScreen::~PageScreen()
{
    platform_.shared<NSNotificationCenter>().removeObserver(this);
    filled_.node()->on_resize = nullptr;
    upright_.removeFromSuperview();
    // The view may outlive this listener of the engine.
    if (page_)
        page_.node()->web.reset();
}

void PageScreen::build()
{
    upright_ = UIView::create();
    filled_.addSubview(upright_);

    if (style_.pages) {
        page_ = UIWebView::create(*this, PageKind::Browsed);
        upright_.addSubview(page_);
    }
    notice_ = plain(UIColor::whiteColor(), upright_);
    notice_.setHidden(true);
    notice_text_ = label(NoticeSize, gray(0.35), notice_);
    notice_text_.setNumberOfLines(0);
    notice_text_.setTextAlignment(Centered);

    bar_ = plain(BarColor, upright_);
    bar_.setHidden(style_.bar == Bar::None);
    bar_edge_ = plain(EdgeColor, bar_);
    const auto button = [this](const Action& tap, const char* name) {
        const UIButton made = UIButton::create();
        made.setAccessibilityLabel(platform_.translation().translate(name));
        made.addTarget(tap);
        made.setShowsTouchWhenHighlighted(true);
        bar_.addSubview(made);
        return made;
    };
    if (style_.bar == Bar::Navigation) {
        back_ = button(action<&PageScreen::go_back>(this, "go_back"), screen_texts::Back);
        forward_ = button(action<&PageScreen::go_forward>(this, "go_forward"), screen_texts::Forward);
        reload_ = button(action<&PageScreen::reload>(this, "reload"), screen_texts::Reload);
        set_symbol(reload_, Symbol::Reload, InkColor);
        address_field_ = plain(FieldColor, bar_);
        address_field_.node()->corner_radius = FieldHeight / 2;
        lock_ = UIImageView::create();
        address_field_.addSubview(lock_);
        text_ = label(AddressSize, InkColor, address_field_);
    } else {
        text_ = label(TitleSize, InkColor, bar_);
        text_.setTextAlignment(Centered);
    }
    text_.setLineBreakMode(CutAtEnd);

    progress_ = plain(ProgressColor, upright_);
    close_ = button(action<&PageScreen::close>(this, "close"), screen_texts::Close);
    if (style_.bar == Bar::None)
        upright_.addSubview(close_);
    const Symbol sign = style_.bar == Bar::None ? Symbol::CloseOnDisc : Symbol::Close;
    if (!style_.close_unseen)
        set_symbol(close_, sign, style_.bar == Bar::None ? UIColor::whiteColor() : InkColor);
    close_.setShowsTouchWhenHighlighted(!style_.close_unseen);
}

// ------------------------------------------------------------------------------------------------------------- Layout

void PageScreen::observe_turns()
{
    auto& center = platform_.shared<NSNotificationCenter>();
    for (const std::string_view turn :
         {UIDeviceOrientationDidChangeNotification, UIApplicationDidChangeStatusBarFrameNotification})
        center.addObserver(action<&PageScreen::turned>(this, "turned"), turn);
    filled_.node()->on_resize = [this] { follow(); };
}

void PageScreen::turned(const NSNotification&)
{
    follow();
}

void PageScreen::follow()
{
    lay_out();
    update();
}

void PageScreen::lay_out()
{
    const Device& device = platform_.device();
    turn_ = held_turn(device.orientation(), device.status_bar_orientation(),
                      device.facts().screen.value_or(filled_.bounds()), turn_);
    upright_.setTransform(CGAffineTransformMakeRotation(-turn_));
    upright_.setFrame({0, 0, filled_.bounds().width, filled_.bounds().height});

    const auto [width, height] = upright_.bounds();
    const double top = style_.bar == Bar::None ? 0 : BarHeight;
    bar_.setFrame({0, 0, width, BarHeight});
    bar_edge_.setFrame({0, BarHeight - Edge, width, Edge});
    const CGRect page{0, top, width, std::max(height - top, 0.0)};
    page_.setFrame(page);
    notice_.setFrame(page);
    notice_text_.setFrame({NoticeMargin, 0, std::max(width - 2 * NoticeMargin, 0.0), page.height});

    const double close = style_.close_unseen ? UnseenTouch : Touch;
    close_.setFrame({width - close, 0, close, style_.bar == Bar::None ? close : BarHeight});
    const double right = width - close;
    if (style_.bar == Bar::Title)
        text_.setFrame({close, 0, std::max(right - close, 0.0), BarHeight - Edge});
    if (style_.bar != Bar::Navigation)
        return;
    back_.setFrame({0, 0, Touch, BarHeight});
    forward_.setFrame({Touch, 0, Touch, BarHeight});
    reload_.setFrame({right - Touch, 0, Touch, BarHeight});
    const double field = std::max(right - 3 * Touch - 2 * Margin, 0.0);
    address_field_.setFrame({2 * Touch + Margin, (BarHeight - FieldHeight) / 2, field, FieldHeight});
    lock_.setFrame({Margin, 0, LockWidth, FieldHeight});
    text_.setFrame({Margin + LockWidth, 0, std::max(field - LockWidth - 3 * Margin, 0.0), FieldHeight});
}

// ----------------------------------------------------------------------------------------------------------- The page

void PageScreen::show_address(const NSURL& address)
{
    if (!address.is_web())
        return show_notice(screen_texts::AddressCannotBeShown);
    notice_.setHidden(true);
    loading_ = true;
    if (WebEngine* engine = page_.engine())
        engine->load_address(address);
    update();
}

void PageScreen::show_html(const NSString& html)
{
    notice_.setHidden(true);
    loading_ = true;
    if (WebEngine* engine = page_.engine())
        engine->load_html(html, nullptr);
    update();
}

void PageScreen::show_text(const NSString& title, const NSString& text)
{
    title_ = title;
    notice_text_.setText(text);
    notice_text_.setTextAlignment(AtLeft);
    notice_.setHidden(false);
    update();
}

void PageScreen::did_start_load()
{
    loading_ = true;
    update();
}

void PageScreen::did_finish_load()
{
    loading_ = false;
    notice_.setHidden(true);
    update();
}

void PageScreen::did_fail_load(const std::string&)
{
    loading_ = false;
    // After a failed link the previous page stays.
    if (!page_.engine()->page_state().has_content)
        show_notice(screen_texts::PageDoesNotCome);
    update();
}

void PageScreen::page_state_changed()
{
    update();
}

void PageScreen::refused(const std::string& what, const std::string& detail)
{
    refusals_.report(platform_, what, detail);
}

void PageScreen::died(const std::string&)
{
    loading_ = false;
    show_notice(screen_texts::PageHasStopped);
    update();
}

bool PageScreen::should_start_load(const NSURL& address, int navigation_type)
{
    if (address.is_web())
        return true;
    const std::string scheme = address.parts().scheme();
    if (navigation_type != LinkFollowed)
        return contains(MadeUpByThePage, scheme);
    if (!contains(NeverHandedOn, scheme)) {
        platform_.emit(event::PageHandedOn{address.absoluteString()});
        platform_.device().open(address);
    }
    return false;
}

ScriptAnswer PageScreen::message(const ScriptMessage&)
{
    return {"a browsed page has no commands", nullptr};
}

void PageScreen::show_notice(const char* text)
{
    notice_text_.setText(platform_.translation().translate(text));
    notice_.setHidden(false);
}

/// Truncates a long host at its start: its end identifies the site.
void PageScreen::show_in_field(const NSURL& address)
{
    constexpr CGSize Unbounded{1e6, 1e6};
    const std::string host = shown_host(address);
    const bool fits = sizeWithFont(host, text_.font(), Unbounded).width <= text_.bounds().width;
    text_.setLineBreakMode(fits ? CutAtEnd : CutAtStart);
    text_.setText(fits ? shown_address(address) : host);
}

void PageScreen::update()
{
    const WebEngine* engine = page_.engine();
    const PageState state = engine ? engine->page_state() : PageState();
    page_.setAccessibilityLabel(state.title.empty() ? shown_address(state.address) : state.title);
    // Before the first content, the view behind the page shows through.
    page_.setOpaque(state.has_content);
    if (style_.bar == Bar::Navigation) {
        set_usable(back_, Symbol::Back, state.can_go_back);
        set_usable(forward_, Symbol::Forward, state.can_go_forward);
        const Symbol lock = state.secure ? Symbol::Lock : Symbol::OpenLock;
        set_symbol(lock_, state.has_content ? lock : Symbol::Blank, state.secure ? InkColor : FaintColor);
        const char* said = state.secure ? screen_texts::SafeConnection : screen_texts::UnsafeConnection;
        lock_.setAccessibilityLabel(state.has_content ? NSString(platform_.translation().translate(said)) : nullptr);
        show_in_field(state.address);
    } else {
        const NSString title = title_ ? title_ : NSString(state.title);
        text_.setText(title.length() > 0 ? title : NSString(platform_.translation().translate(screen_texts::Store)));
    }
    progress_.setHidden(!style_.progress || !loading_);
    const double top = style_.bar == Bar::None ? 0 : BarHeight;
    const double share = std::clamp(state.progress, LeastProgress, 1.0);
    progress_.setFrame({0, top, upright_.bounds().width * share, ProgressHeight});
}

// --------------------------------------------------------------------------------------------------------- The viewer

void PageScreen::go_back()
{
    if (WebEngine* engine = page_.engine())
        engine->go_back();
}

void PageScreen::go_forward()
{
    if (WebEngine* engine = page_.engine())
        engine->go_forward();
}

void PageScreen::reload()
{
    if (WebEngine* engine = page_.engine())
        engine->reload();
}

void PageScreen::close()
{
    // Retained until the end: on_close_ releases this screen.
    const auto held = shared_from_this();
    on_close_();
}

bool PageScreen::is_seen() const
{
    const ViewNode* node = upright_.node().get();
    while (node->parent && !node->hidden)
        node = node->parent;
    return node->kind == ViewNode::Kind::Window && !node->hidden;
}

std::shared_ptr<PageScreen> PageScreen::topmost(Platform& platform)
{
    const auto& screens = platform.shared<PageScreens>().screens;
    for (auto each = screens.rbegin(); each != screens.rend(); ++each)
        if (auto screen = each->lock(); screen && screen->is_seen())
            return screen;
    return nullptr;
}

} // namespace qoro
