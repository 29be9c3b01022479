#pragma once

#include "platform/Export.h"
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

namespace QORO_EXPORT qoro
{

struct ViewNode;
class UIViewController;
class UIView;
class UILabel;

/// A colour, its components from 0 to 1, or null.
struct UIColor {
    /// A component, 0 to 1, not multiplied by alpha.
    /// @{
    double red = 0;
    double green = 0;
    double blue = 0;
    /// @}
    /// Opacity: 0 is transparent, 1 is opaque.
    double alpha = 0;
    /// False for null.
    bool present = false;

    /// A colour with these components, which are not clamped.
    static UIColor colorWithRed(double red, double green, double blue, double alpha);
    /// Transparent black; not null.
    static UIColor clearColor() { return colorWithRed(0, 0, 0, 0); }
    /// Opaque black.
    static UIColor blackColor() { return colorWithRed(0, 0, 0, 1); }
    /// Opaque white.
    static UIColor whiteColor() { return colorWithRed(1, 1, 1, 1); }
    /// The same colour with another opacity; null for null.
    UIColor colorWithAlphaComponent(double of_alpha) const;
    /// False for null.
    explicit operator bool() const { return present; }
    /// Whether all components are equal; null differs from clearColor().
    friend bool operator==(const UIColor&, const UIColor&) = default;
};

/// A font by family and size in points.
using UIFont = FontSpec;

/// UILabel::setLineBreakMode: a line may break between any two characters.
inline constexpr int NSLineBreakByCharWrapping = 1;
/// UILabel::setTextAlignment: text ends at the right edge.
inline constexpr int NSTextAlignmentRight = 2;
/// UIView::setContentMode: an image view shows the whole picture and preserves its aspect ratio.
inline constexpr int UIViewContentModeScaleAspectFit = 1;
/// UIWindow::setWindowLevel: the level of application windows.
inline constexpr double UIWindowLevelNormal = 0;
/// UIWindow::setWindowLevel: the level of the status bar.
inline constexpr double UIWindowLevelStatusBar = 1000;

/// A decoded picture, or null.
class UIImage
{
public:
    /// A null picture.
    /// @{
    UIImage() = default;
    UIImage(std::nullptr_t) {}
    /// @}
    /// Decodes bytes at scale 1, on every call anew; null when they are not a picture.
    static UIImage imageWithData(const NSData& bytes);

    /// False for null.
    explicit operator bool() const { return decoded_ != nullptr; }
    /// The picture in the platform's representation; null for null.
    const std::shared_ptr<const DecodedImage>& decoded() const { return decoded_; }
    /// The bytes it was decoded from; null for null.
    const NSData& data() const { return data_; }
    /// Identifies a compiled-in picture, from which its accessible name is derived; empty for any other picture.
    std::string_view accessibilityIdentifier() const { return identifier_; }
    /// Sets the identifier.
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
    /// A null handle.
    UIView() = default;
    /// A null handle.
    UIView(std::nullptr_t) {}
    /// A handle of a node; null for a null node. The node's kind must be the handle's.
    explicit UIView(std::shared_ptr<ViewNode> node) : node_(std::move(node)) {}
    /// Creates a view with a zero frame.
    static UIView create();

    /// False for a null handle.
    explicit operator bool() const { return node_ != nullptr; }
    /// The view's node in the tree; null for a null handle.
    const std::shared_ptr<ViewNode>& node() const { return node_; }
    /// Whether both refer to the same view, or both are null.
    friend bool operator==(const UIView& a, const UIView& b) { return a.node_ == b.node_; }

    /// The bounding rectangle of the rotated bounds, in the parent's coordinates, in points.
    CGRect frame() const;
    /// Preserves the rotation: the bounds become the frame's extents rotated back, the centre the frame's centre.
    void setFrame(const CGRect& frame) const;
    /// The view's own size before rotation, in points.
    CGSize bounds() const;
    /// The middle of the frame, in the parent's coordinates, in points.
    CGPoint center() const;
    /// Moves the view; preserves bounds and rotation.
    void setCenter(CGPoint center) const;
    /// The view's rotation about its centre.
    CGAffineTransform transform() const;
    /// Rotates the view. Preserves bounds and centre.
    void setTransform(CGAffineTransform transform) const;

    /// Whether the view itself is hidden, with its subviews; says nothing of its parents. A new window is hidden. False
    /// for a null view.
    /// @{
    bool isHidden() const;
    void setHidden(bool hidden) const;
    /// @}
    /// Opacity of the view with its subviews, 0 to 1. Below 0.01 a view takes no touches.
    /// @{
    double alpha() const;
    void setAlpha(double alpha) const;
    /// @}
    /// Null for a view without a background.
    /// @{
    UIColor backgroundColor() const;
    void setBackgroundColor(const UIColor& color) const;
    /// @}
    /// Whether a web view hides what lies below its page, and a video view without a background colour is black beside
    /// its picture. Has no effect on other views.
    /// @{
    bool isOpaque() const;
    void setOpaque(bool opaque) const;
    /// @}
    /// Stored only; does not affect layout.
    /// @{
    int autoresizingMask() const;
    void setAutoresizingMask(int mask) const;
    /// @}
    /// Whether the view and its subviews take touches. Off in new labels, image views, spinners and countdowns.
    /// @{
    bool isUserInteractionEnabled() const;
    void setUserInteractionEnabled(bool enabled) const;
    /// @}
    /// How an image view places its picture: UIViewContentModeScaleAspectFit, or any other value to stretch it.
    /// @{
    int contentMode() const;
    void setContentMode(int mode) const;
    /// @}
    /// Accessible name; null derives it from the view's text, picture or action.
    /// @{
    NSString accessibilityLabel() const;
    void setAccessibilityLabel(const NSString& label) const;
    /// @}

    /// The parent; null when it has none.
    UIView superview() const;
    /// The children, from bottom to top; empty for a null view.
    std::vector<UIView> subviews() const;
    /// Adds the child on top, after removing it from its current parent, which may be this view. No effect for a null
    /// child, or for one that is this view or contains it.
    void addSubview(const UIView& child) const;
    /// Removes the view from its parent, which may hold the last reference to it. No effect without a parent.
    void removeFromSuperview() const;
    /// Moves a child above its siblings, though below presented ones. No effect for a view that is not a child.
    void bringSubviewToFront(const UIView& child) const;

protected:
    /// Null for a null handle.
    std::shared_ptr<ViewNode> node_;
};

/// Handle of a button: a title over a background picture.
class UIButton : public UIView
{
public:
    using UIView::UIView;
    /// Creates a button with a zero frame, without title, picture and targets.
    static UIButton create();

    /// Picture behind the title, stretched to the button's size; null for none.
    /// @{
    void setBackgroundImage(const UIImage& image) const;
    UIImage backgroundImage() const;
    /// @}
    /// Title, drawn centred in the title label's font and colour; null for none. The reference is valid until the title
    /// changes.
    /// @{
    void setTitle(const NSString& title) const;
    const NSString& title() const;
    /// @}
    /// Shadow of the title, at the title label's shadow offset; null for no shadow.
    void setTitleShadowColor(const UIColor& color) const;
    /// Whether the button glows while it is pressed.
    void setShowsTouchWhenHighlighted(bool shows) const;
    /// The label that determines the title's font, colour and shadow offset; null for a null button. It has no parent.
    UILabel titleLabel() const;

    /// Adds a target for touch-up-inside. An equal action is added only once.
    void addTarget(const Action& action) const;
    /// Removes every target.
    void removeAllTargets() const;
    /// The targets in the order of their addition; empty for a null button.
    const std::vector<Action>& targets() const;
    /// Runs every target in order, as for a touch-up-inside, whether or not the button is visible.
    void sendTouchUpInside() const;
};

/// Handle of a text label.
class UILabel : public UIView
{
public:
    using UIView::UIView;
    /// Creates a label with a zero frame and without a text.
    static UILabel create();

    /// The text; null when not set. The reference is valid until the text changes.
    /// @{
    const NSString& text() const;
    void setText(const NSString& text) const;
    /// @}
    /// The font; of no family and size 0 for a null label. The reference is valid until the font changes.
    /// @{
    const UIFont& font() const;
    void setFont(const UIFont& font) const;
    /// @}
    /// The text's colour. Null is black, or white in a button's title label.
    /// @{
    UIColor textColor() const;
    void setTextColor(const UIColor& color) const;
    /// @}
    /// How a line that is too long is broken: 3 elides its head, 4 its tail, 5 its middle. Otherwise a label of one
    /// line is clipped, and others wrap between words, or between characters with NSLineBreakByCharWrapping.
    /// @{
    int lineBreakMode() const;
    void setLineBreakMode(int mode) const;
    /// @}
    /// Horizontal alignment: 1 centres, NSTextAlignmentRight is right, any other value is left.
    /// @{
    int textAlignment() const;
    void setTextAlignment(int alignment) const;
    /// @}
    /// 1 (the default) draws one line; any other value draws as many as the text needs.
    void setNumberOfLines(int lines) const;
    /// Stored only; does not affect drawing.
    void setHighlighted(bool highlighted) const;
    /// Offset of the text's shadow, in points.
    void setShadowOffset(CGSize offset) const;
    /// Colour of the text's shadow; null for no shadow.
    void setShadowColor(const UIColor& color) const;
    /// Sets the bounds to the size of the text; the origin stays.
    void sizeToFit() const;
};

/// Handle of a view that shows a picture.
class UIImageView : public UIView
{
public:
    using UIView::UIView;
    /// Creates an image view with a zero frame and without a picture.
    static UIImageView create();
    /// The picture, placed by contentMode(); null for none.
    /// @{
    void setImage(const UIImage& image) const;
    UIImage image() const;
    /// @}
};

/// Handle of a window: a root of the view tree.
class UIWindow : public UIView
{
public:
    using UIView::UIView;
    /// Creates a window: hidden, not key, at level 0.
    /// @param frame a window without a frame fills the screen, though its frame still reads zero
    static UIWindow create(const CGRect& frame = {});

    /// Order among windows: one of a higher level covers those of lower levels.
    /// @{
    double windowLevel() const;
    void setWindowLevel(double level) const;
    /// @}
    /// Whether the window is its platform's key window.
    bool isKeyWindow() const;
    /// Shows the window above the others of its level and makes it the only key window.
    void makeKeyAndVisible() const;
    /// Leaves the window visible, and the platform without a key window if it was this one.
    void resignKeyWindow() const;
    /// Null without one.
    std::shared_ptr<UIViewController> rootViewController() const;
    /// Retains the controller and adds its view unless this window is already its parent. Resizes nothing.
    void setRootViewController(const std::shared_ptr<UIViewController>& controller) const;
};

/// A slider. Sliders exist only in volume views and control the output volume.
class UISlider : public UIView
{
public:
    using UIView::UIView;
    /// The output volume, 0 to 1; 0 for null.
    float value() const;
    /// Sets the output volume, 0 to 1, and emits it as an event.
    void setValue(float value) const;
};

/// Contains the output volume's slider on a device that has one.
class MPVolumeView : public UIView
{
public:
    using UIView::UIView;
    /// Creates a volume view with a frame in points.
    static MPVolumeView create(const CGRect& frame);
    /// Stored only: no display draws a volume view.
    /// @{
    void setShowsVolumeSlider(bool shows) const;
    void setShowsRouteButton(bool shows) const;
    /// @}
    /// The first slider among its subviews; null without one.
    UISlider firstSlider() const;
};

/// A web view; by default for a creative.
class UIWebView : public UIView
{
public:
    using UIView::UIView;
    /// Creates a web view and its engine. The listener must outlive the engine.
    static UIWebView create(WebListener& listener, PageKind kind = PageKind::Creative);

    /// Loads a page from its source, and emits it as an event. Null HTML (bytes that were not valid UTF-8) shows
    /// nothing.
    void loadHTMLString(const NSString& html, const NSURL& baseURL) const;
    /// Address of the page shown; null before the first.
    NSURL requestURL() const;
    /// Whether a page wider than the view is shrunk to fit; off by default.
    void setScalesPageToFit(bool scales) const;
    /// Calls listeners in the page's script (WebEngine::call_listeners).
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
    /// Called once, when the view has been created and populated.
    virtual void viewDidLoad() {}
    /// The viewer sees the view, for the first time or again. Does nothing by default.
    virtual void viewDidAppear(bool animated);
    /// Shows the controller's view above everything in this controller's window, and retains the controller until it is
    /// dismissed. A non-null completion runs as an event of its own.
    virtual void presentViewController(const std::shared_ptr<UIViewController>& controller, bool animated,
                                       std::function<void()> completion);
    /// Ends the presentation by this controller; if there is none, the presentation of this controller.
    virtual void dismissViewController(bool animated, std::function<void()> completion);
    /// Whether another controller presents this one.
    bool isBeingPresented() const { return !presenter_.expired(); }
    /// Does nothing by default: parents of controllers are not modelled.
    virtual void removeFromParentViewController();
    /// The interface has rotated. Does nothing by default.
    /// @param orientation the one before
    virtual void didRotateFromInterfaceOrientation(UIInterfaceOrientation orientation);

protected:
    /// For a controller whose view is created elsewhere (the movie player's).
    void setView(const UIView& view) { view_ = view; }
    /// Populates the view created by loadView; called before viewDidLoad.
    virtual void populateView() {}

private:
    friend class StateReader; // workbench/explore/StateHash.cpp
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
    /// Called by Platform::shared; use sharedApplication().
    explicit UIApplication(Platform& platform) : platform_(platform) {}
    /// The current platform's application.
    static UIApplication& sharedApplication();
    /// Null when no window is key.
    UIWindow keyWindow() const;
    /// All windows that still exist, in order of creation.
    std::vector<UIWindow> windows() const;
    /// Orientation of the interface, which the device's may differ from.
    UIInterfaceOrientation statusBarOrientation() const;
    /// Whether the device hides its status bar.
    bool isStatusBarHidden() const;
    /// Whether an application is registered for the address; false for a null address.
    bool canOpenURL(const NSURL& address) const;
    /// Opens an address, and emits it as an event. No effect for a null address.
    void openURL(const NSURL& address) const;

private:
    Platform& platform_;
};

/// The orientation of the current platform's device.
struct UIDevice {
    /// The current platform's orientation, as forced or as the device is held.
    static UIDeviceOrientation orientation();
    /// Overrides the orientation, as setting the key "orientation" does, and emits it as an event. Notifies observers
    /// if the orientation changes.
    static void forceOrientation(UIDeviceOrientation orientation);
};

/// Availability of the message composer.
struct MFMessageComposeViewController {
    /// Whether the device has a message composer.
    static bool available();
    /// Whether messages can be sent; false without a composer.
    static bool canSendText();
};

/// Size of a text in a font, in points, clipped to a box.
CGSize sizeWithFont(const NSString& text, const UIFont& font, CGSize constrainedToSize);

} // namespace qoro
