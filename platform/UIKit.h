#pragma once

#include "platform/Foundation.h"
#include "platform/Geometry.h"
#include "platform/Object.h"
#include "platform/Ports.h"

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

// Views are small handles: an empty one is null, a copy is the same view. Asking a null handle does nothing and answers
// zero. The tree behind them is views/.

namespace qoro
{

struct ViewNode;
class UIViewController;
class UIView;
class UILabel;

/// UIDeviceOrientation
enum UIDeviceOrientation : std::int64_t {
    UIDeviceOrientationUnknown = 0,
    UIDeviceOrientationPortrait = 1,
    UIDeviceOrientationPortraitUpsideDown = 2,
    UIDeviceOrientationLandscapeLeft = 3,
    UIDeviceOrientationLandscapeRight = 4,
    UIDeviceOrientationFaceUp = 5,
    UIDeviceOrientationFaceDown = 6,
};

/// UIInterfaceOrientation. The landscape sides carry the device's numbers the other way round.
enum UIInterfaceOrientation : std::int64_t {
    UIInterfaceOrientationPortrait = 1,
    UIInterfaceOrientationPortraitUpsideDown = 2,
    UIInterfaceOrientationLandscapeRight = 3,
    UIInterfaceOrientationLandscapeLeft = 4,
};

/// Landscape by number, for devices and status bars alike: 3 or 4.
inline bool isLandscape(std::int64_t orientation)
{
    return static_cast<std::uint64_t>(orientation) - 3 <= 1;
}

/// Red, green, blue and alpha from 0 to 1, or null.
struct UIColor {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 0;
    bool present = false;

    static UIColor colorWithRed(double red, double green, double blue, double alpha);
    static UIColor clearColor() { return colorWithRed(0, 0, 0, 0); }
    static UIColor blackColor() { return colorWithRed(0, 0, 0, 1); }
    static UIColor whiteColor() { return colorWithRed(1, 1, 1, 1); }
    UIColor colorWithAlphaComponent(double of_alpha) const;
    explicit operator bool() const { return present; }
    friend bool operator==(const UIColor&, const UIColor&) = default;
};

using UIFont = FontSpec;

/// NSLineBreakByCharWrapping
inline constexpr int NSLineBreakByCharWrapping = 1;
/// NSTextAlignmentRight
inline constexpr int NSTextAlignmentRight = 2;
inline constexpr int UIViewContentModeScaleAspectFit = 1;
inline constexpr double UIWindowLevelNormal = 0;
inline constexpr double UIWindowLevelStatusBar = 1000;

/// A decoded picture or null.
class UIImage
{
public:
    UIImage() = default;
    UIImage(std::nullptr_t) {}
    /// Decodes anew, at scale 1; null when the bytes are no picture.
    static UIImage imageWithData(const NSData& bytes);

    explicit operator bool() const { return decoded_ != nullptr; }
    const std::shared_ptr<const DecodedImage>& decoded() const { return decoded_; }
    const NSData& data() const { return data_; }
    /// Which of the program's own pictures it is, for whoever can't see it; empty for any other.
    std::string_view accessibilityIdentifier() const { return identifier_; }
    /// @param identifier lasts as long as the program
    void setAccessibilityIdentifier(std::string_view identifier) { identifier_ = identifier; }

private:
    NSData data_;
    std::string_view identifier_;
    std::shared_ptr<const DecodedImage> decoded_;
};

class UIView
{
public:
    UIView() = default;
    UIView(std::nullptr_t) {}
    explicit UIView(std::shared_ptr<ViewNode> node) : node_(std::move(node)) {}
    /// A new view with a zero frame.
    static UIView create();

    explicit operator bool() const { return node_ != nullptr; }
    const std::shared_ptr<ViewNode>& node() const { return node_; }
    friend bool operator==(const UIView& a, const UIView& b) { return a.node_ == b.node_; }

    /// The smallest upright rectangle that holds the turned bounds, in the parent's coordinates.
    CGRect frame() const;
    /// Keeps the rotation: the bounds become the extents turned back, the centre the frame's middle.
    void setFrame(const CGRect& frame) const;
    CGSize bounds() const;
    CGPoint center() const;
    void setCenter(CGPoint center) const;
    CGAffineTransform transform() const;
    /// Keeps bounds and centre.
    void setTransform(CGAffineTransform transform) const;

    /// A null view counts as not hidden.
    bool isHidden() const;
    void setHidden(bool hidden) const;
    double alpha() const;
    void setAlpha(double alpha) const;
    UIColor backgroundColor() const;
    void setBackgroundColor(const UIColor& color) const;
    bool isOpaque() const;
    void setOpaque(bool opaque) const;
    int autoresizingMask() const;
    /// Kept; nothing moves by it.
    void setAutoresizingMask(int mask) const;
    bool isUserInteractionEnabled() const;
    void setUserInteractionEnabled(bool enabled) const;
    int contentMode() const;
    void setContentMode(int mode) const;
    /// What it is called for whoever can't see it; null where its look says it.
    NSString accessibilityLabel() const;
    void setAccessibilityLabel(const NSString& label) const;

    /// Null when it stands in none.
    UIView superview() const;
    /// From the lowest to the topmost.
    std::vector<UIView> subviews() const;
    /// Adds on top, moving it from wherever it stands (also to the top of the same parent). Nothing for a null child.
    void addSubview(const UIView& child) const;
    void removeFromSuperview() const;
    void bringSubviewToFront(const UIView& child) const;

protected:
    std::shared_ptr<ViewNode> node_;
};

class UIButton : public UIView
{
public:
    using UIView::UIView;
    static UIButton create();

    /// The picture behind the title in the normal state; null clears it.
    void setBackgroundImage(const UIImage& image) const;
    UIImage backgroundImage() const;
    /// The title in the normal state.
    void setTitle(const NSString& title) const;
    NSString title() const;
    void setTitleShadowColor(const UIColor& color) const;
    void setShowsTouchWhenHighlighted(bool shows) const;
    /// The label that draws the title; null for a null button.
    UILabel titleLabel() const;

    /// For touch-up-inside. An equal target and action is kept once.
    void addTarget(const Action& action) const;
    void removeAllTargets() const;
    /// In the order in which they were added.
    const std::vector<Action>& targets() const;
    /// A touch up inside: every target runs, in order, whether or not the button can be seen.
    void sendTouchUpInside() const;
};

class UILabel : public UIView
{
public:
    using UIView::UIView;
    static UILabel create();

    NSString text() const;
    void setText(const NSString& text) const;
    UIFont font() const;
    void setFont(const UIFont& font) const;
    UIColor textColor() const;
    void setTextColor(const UIColor& color) const;
    int lineBreakMode() const;
    void setLineBreakMode(int mode) const;
    int textAlignment() const;
    void setTextAlignment(int alignment) const;
    void setNumberOfLines(int lines) const;
    void setHighlighted(bool highlighted) const;
    void setShadowOffset(CGSize offset) const;
    void setShadowColor(const UIColor& color) const;
    /// The bounds become the text's size; the origin stays.
    void sizeToFit() const;
};

class UIImageView : public UIView
{
public:
    using UIView::UIView;
    static UIImageView create();
    void setImage(const UIImage& image) const;
    UIImage image() const;
};

class UIWindow : public UIView
{
public:
    using UIView::UIView;
    /// A new window: hidden, not key, at level 0.
    /// @param frame a window that is given none fills the screen; its frame reads zero all the same
    static UIWindow create(const CGRect& frame = {});

    double windowLevel() const;
    void setWindowLevel(double level) const;
    bool isKeyWindow() const;
    /// Shows it above the others of its level and takes the key from the window that had it.
    void makeKeyAndVisible() const;
    void resignKeyWindow() const;
    std::shared_ptr<UIViewController> rootViewController() const;
    /// Holds the controller, and adds its view unless it stands here already. Nothing is resized.
    void setRootViewController(const std::shared_ptr<UIViewController>& controller) const;
};

/// A slider; the one of a volume view is the output volume's own.
class UISlider : public UIView
{
public:
    using UIView::UIView;
    /// 0 to 1; 0 for null.
    float value() const;
    void setValue(float value) const;
};

/// Holds the slider of the output volume, on a device that has one.
class MPVolumeView : public UIView
{
public:
    using UIView::UIView;
    static MPVolumeView create(const CGRect& frame);
    void setShowsVolumeSlider(bool shows) const;
    void setShowsRouteButton(bool shows) const;
    /// The first of its subviews that is a slider; null when none is.
    UISlider firstSlider() const;
};

/// A page: a creative's, unless it is made for another kind.
class UIWebView : public UIView
{
public:
    using UIView::UIView;
    /// The listener outlives the view.
    static UIWebView create(WebListener& listener, PageKind kind = PageKind::Creative);

    /// Null html (bytes that were no UTF-8) shows nothing; told to the witness.
    void loadHTMLString(const NSString& html, const NSURL& baseURL) const;
    /// The address of the page that is shown; null before any.
    NSURL requestURL() const;
    void setScalesPageToFit(bool scales) const;
    void callListeners(const std::string& event, const NSArray& callbacks, const NSDictionary& data) const;
    /// The engine, for what only a browser asks of it; null for a null view.
    WebEngine* engine() const;
};

class UIViewController : public Object
{
public:
    /// Null until the view is loaded.
    const UIView& view() const { return view_; }
    /// Makes the view, of the main screen's size, and calls viewDidLoad. Once.
    void loadView();
    virtual void viewDidLoad() {}
    virtual void viewDidAppear(bool animated);
    /// Shows the controller's view over everything in the window of this one's, and keeps the controller, until it is
    /// dismissed. The completion, if there is one, runs as an event of its own.
    virtual void presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                                       std::function<void()> completion);
    /// Ends what this controller presents; when it presents nothing, its own presentation.
    virtual void dismissViewController(bool animated, std::function<void()> completion);
    /// Whether another controller presents this one.
    bool isBeingPresented() const { return !presenter_.expired(); }
    virtual void removeFromParentViewController();
    virtual void didRotateFromInterfaceOrientation(std::int64_t orientation);

protected:
    /// For a controller whose view is made elsewhere (the movie player's).
    void setView(const UIView& view) { view_ = view; }
    /// Fills the view that loadView has made, before viewDidLoad.
    virtual void populateView() {}

private:
    void end_presentation();

    UIView view_;
    std::shared_ptr<UIViewController> presenting_;
    std::weak_ptr<UIViewController> presenter_;
};

/// The main screen; absent on a device without one.
struct UIScreen {
    /// Its bounds; absent without a screen.
    static std::optional<CGSize> mainScreenBounds();
};

class UIApplication
{
public:
    explicit UIApplication(Platform& platform) : platform_(platform) {}
    static UIApplication& sharedApplication();
    /// Null when no window has the key.
    UIWindow keyWindow() const;
    /// Those that something still holds, oldest first.
    std::vector<UIWindow> windows() const;
    std::int64_t statusBarOrientation() const;
    bool isStatusBarHidden() const;
    bool canOpenURL(const NSURL& address) const;
    /// Told to the witness. Nothing for a null address.
    void openURL(const NSURL& address) const;

private:
    Platform& platform_;
};

struct UIDevice {
    static std::int64_t orientation();
    /// Sets the value for the key "orientation"; told to the witness.
    static void forceOrientation(std::int64_t orientation);
};

/// MFMessageComposeViewController
struct MFMessageComposeViewController {
    /// Whether the class exists.
    static bool available();
    static bool canSendText();
};

/// The size of a text in a font, cut to a box.
CGSize sizeWithFont(const NSString& text, const UIFont& font, CGSize constrainedToSize);

} // namespace qoro
