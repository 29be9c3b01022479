#pragma once

#include "platform/Foundation.h"
#include "platform/Geometry.h"
#include "platform/Object.h"
#include "platform/Ports.h"

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

// Views are small handles. An empty handle is null; copies refer to the same view. On a null handle setters have no
// effect and getters return zero. The view tree behind the handles is implemented in views/.

namespace qoro
{

struct ViewNode;
class UIViewController;
class UIView;
class UILabel;

/// A colour, its components from 0 to 1, or null.
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

inline constexpr int NSLineBreakByCharWrapping = 1;
inline constexpr int NSTextAlignmentRight = 2;
inline constexpr int UIViewContentModeScaleAspectFit = 1;
inline constexpr double UIWindowLevelNormal = 0;
inline constexpr double UIWindowLevelStatusBar = 1000;

/// A decoded picture, or null.
class UIImage
{
public:
    UIImage() = default;
    UIImage(std::nullptr_t) {}
    /// Decodes bytes at scale 1, on every call anew; null when they are not a picture.
    static UIImage imageWithData(const NSData& bytes);

    explicit operator bool() const { return decoded_ != nullptr; }
    const std::shared_ptr<const DecodedImage>& decoded() const { return decoded_; }
    const NSData& data() const { return data_; }
    /// Identifies a compiled-in picture, from which its accessible name is derived; empty for any other picture.
    std::string_view accessibilityIdentifier() const { return identifier_; }
    /// @param identifier stored by reference; must have static storage duration
    void setAccessibilityIdentifier(std::string_view identifier) { identifier_ = identifier; }

private:
    NSData data_;
    std::string_view identifier_;
    std::shared_ptr<const DecodedImage> decoded_;
};

/// Handle of a view.
class UIView
{
public:
    UIView() = default;
    UIView(std::nullptr_t) {}
    explicit UIView(std::shared_ptr<ViewNode> node) : node_(std::move(node)) {}
    /// Creates a view with a zero frame.
    static UIView create();

    explicit operator bool() const { return node_ != nullptr; }
    const std::shared_ptr<ViewNode>& node() const { return node_; }
    friend bool operator==(const UIView& a, const UIView& b) { return a.node_ == b.node_; }

    /// The bounding rectangle of the rotated bounds, in the parent's coordinates, in points.
    CGRect frame() const;
    /// Preserves the rotation: the bounds become the frame's extents rotated back, the centre the frame's centre.
    void setFrame(const CGRect& frame) const;
    CGSize bounds() const;
    CGPoint center() const;
    void setCenter(CGPoint center) const;
    CGAffineTransform transform() const;
    /// Preserves bounds and centre.
    void setTransform(CGAffineTransform transform) const;

    /// False for a null view.
    bool isHidden() const;
    void setHidden(bool hidden) const;
    double alpha() const;
    void setAlpha(double alpha) const;
    UIColor backgroundColor() const;
    void setBackgroundColor(const UIColor& color) const;
    bool isOpaque() const;
    void setOpaque(bool opaque) const;
    int autoresizingMask() const;
    /// Stored only; does not affect layout.
    void setAutoresizingMask(int mask) const;
    bool isUserInteractionEnabled() const;
    void setUserInteractionEnabled(bool enabled) const;
    int contentMode() const;
    void setContentMode(int mode) const;
    /// Accessible name; null derives it from the picture or action.
    NSString accessibilityLabel() const;
    void setAccessibilityLabel(const NSString& label) const;

    /// The parent; null when it has none.
    UIView superview() const;
    /// From bottom to top.
    std::vector<UIView> subviews() const;
    /// Adds the child on top, after removing it from its current parent, which may be this view. No effect for a null
    /// child, or for one that is this view or contains it.
    void addSubview(const UIView& child) const;
    void removeFromSuperview() const;
    void bringSubviewToFront(const UIView& child) const;

protected:
    std::shared_ptr<ViewNode> node_;
};

/// Handle of a button: a title over a background picture.
class UIButton : public UIView
{
public:
    using UIView::UIView;
    static UIButton create();

    /// Picture behind the title in the normal state; null clears it.
    void setBackgroundImage(const UIImage& image) const;
    UIImage backgroundImage() const;
    /// Title in the normal state.
    void setTitle(const NSString& title) const;
    NSString title() const;
    void setTitleShadowColor(const UIColor& color) const;
    void setShowsTouchWhenHighlighted(bool shows) const;
    /// The label that draws the title; null for a null button.
    UILabel titleLabel() const;

    /// Adds a target for touch-up-inside. An equal action is added only once.
    void addTarget(const Action& action) const;
    void removeAllTargets() const;
    /// In the order of their addition.
    const std::vector<Action>& targets() const;
    /// Runs every target in order, as for a touch-up-inside, whether or not the button is visible.
    void sendTouchUpInside() const;
};

/// Handle of a text label.
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
    /// Sets the bounds to the size of the text; the origin stays.
    void sizeToFit() const;
};

/// Handle of a view that shows a picture.
class UIImageView : public UIView
{
public:
    using UIView::UIView;
    static UIImageView create();
    void setImage(const UIImage& image) const;
    UIImage image() const;
};

/// Handle of a window: a root of the view tree.
class UIWindow : public UIView
{
public:
    using UIView::UIView;
    /// Creates a window: hidden, not key, at level 0.
    /// @param frame a window without a frame fills the screen, though its frame still reads zero
    static UIWindow create(const CGRect& frame = {});

    double windowLevel() const;
    void setWindowLevel(double level) const;
    bool isKeyWindow() const;
    /// Shows the window above the others of its level and makes it the only key window.
    void makeKeyAndVisible() const;
    void resignKeyWindow() const;
    std::shared_ptr<UIViewController> rootViewController() const;
    /// Retains the controller and adds its view unless this window is already its parent. Resizes nothing.
    void setRootViewController(const std::shared_ptr<UIViewController>& controller) const;
};

/// A slider. Sliders exist only in volume views and control the output volume.
class UISlider : public UIView
{
public:
    using UIView::UIView;
    /// 0 to 1; 0 for null.
    float value() const;
    void setValue(float value) const;
};

/// Contains the output volume's slider on a device that has one.
class MPVolumeView : public UIView
{
public:
    using UIView::UIView;
    static MPVolumeView create(const CGRect& frame);
    void setShowsVolumeSlider(bool shows) const;
    void setShowsRouteButton(bool shows) const;
    /// The first slider among its subviews; null without one.
    UISlider firstSlider() const;
};

/// A web view; by default for a creative.
class UIWebView : public UIView
{
public:
    using UIView::UIView;
    /// The listener must outlive the web view's engine.
    static UIWebView create(WebListener& listener, PageKind kind = PageKind::Creative);

    /// Loads a page from its source, and emits it as an event. Null HTML (bytes that were not valid UTF-8) shows
    /// nothing.
    void loadHTMLString(const NSString& html, const NSURL& baseURL) const;
    /// Address of the page shown; null before the first.
    NSURL requestURL() const;
    void setScalesPageToFit(bool scales) const;
    void callListeners(const std::string& event, const NSArray& callbacks, const NSDictionary& data) const;
    /// The engine, for operations that only a browser needs; null for a null view.
    WebEngine* engine() const;
};

/// A controller that owns a view.
class UIViewController : public Object
{
public:
    /// Null until the view is loaded.
    const UIView& view() const { return view_; }
    /// Creates the view at the main screen's size and calls viewDidLoad. Later calls have no effect.
    void loadView();
    virtual void viewDidLoad() {}
    virtual void viewDidAppear(bool animated);
    /// Shows the controller's view above everything in this controller's window, and retains the controller until it is
    /// dismissed. A non-null completion runs as an event of its own.
    virtual void presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                                       std::function<void()> completion);
    /// Ends the presentation by this controller; if there is none, the presentation of this controller.
    virtual void dismissViewController(bool animated, std::function<void()> completion);
    /// Whether another controller presents this one.
    bool isBeingPresented() const { return !presenter_.expired(); }
    virtual void removeFromParentViewController();
    virtual void didRotateFromInterfaceOrientation(UIInterfaceOrientation orientation);

protected:
    /// For a controller whose view is created elsewhere (the movie player's).
    void setView(const UIView& view) { view_ = view; }
    /// Populates the view created by loadView; called before viewDidLoad.
    virtual void populateView() {}

private:
    void end_presentation();

    UIView view_;
    std::shared_ptr<UIViewController> presenting_;
    std::weak_ptr<UIViewController> presenter_;
};

/// The main screen.
struct UIScreen {
    /// Its size in points; absent on a device without a screen.
    static std::optional<CGSize> mainScreenBounds();
};

/// The application: its windows, the status bar and opening of addresses. One per platform.
class UIApplication
{
public:
    explicit UIApplication(Platform& platform) : platform_(platform) {}
    static UIApplication& sharedApplication();
    /// Null when no window is key.
    UIWindow keyWindow() const;
    /// All windows that still exist, in order of creation.
    std::vector<UIWindow> windows() const;
    UIInterfaceOrientation statusBarOrientation() const;
    bool isStatusBarHidden() const;
    bool canOpenURL(const NSURL& address) const;
    /// Opens an address, and emits it as an event. No effect for a null address.
    void openURL(const NSURL& address) const;

private:
    Platform& platform_;
};

/// The orientation of the current platform's device.
struct UIDevice {
    static UIDeviceOrientation orientation();
    /// Overrides the orientation, as setting the key "orientation" does, and emits it as an event.
    static void forceOrientation(UIDeviceOrientation orientation);
};

/// Availability of the message composer.
struct MFMessageComposeViewController {
    /// Whether the device has a message composer.
    static bool available();
    static bool canSendText();
};

/// Size of a text in a font, in points, clipped to a box.
CGSize sizeWithFont(const NSString& text, const UIFont& font, CGSize constrainedToSize);

} // namespace qoro
