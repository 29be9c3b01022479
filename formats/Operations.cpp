#include "formats/Operations.h"

#include "Base/VideoPlayer/QoroVideoWebViewController.h"
#include "formats/Fields.h"

#include <algorithm>

namespace qoro
{

namespace
{

using Controller = QoroVideoWebViewController;

/// The store page on screen: the presented one, or the one in the store's own window.
std::shared_ptr<QoroAppStoreMockViewController> store_page(const Controller& controller)
{
    if (controller.qoroAppStoreMockViewController)
        return controller.qoroAppStoreMockViewController;
    return std::dynamic_pointer_cast<QoroAppStoreMockViewController>(controller.appStoreWindow.rootViewController());
}

template <void (Controller::*operation)()>
Value plain(Controller& controller, const NSArray&)
{
    (controller.*operation)();
    return nullptr;
}

/// Closes the browser, which notifies the controller; without a browser, notifies the controller directly.
Value close_in_app_web_view(Controller& controller, const NSArray&)
{
    if (const auto browser = controller.qoroInAppWebViewController)
        browser->closed_by_viewer();
    else
        controller.closeInAppWebView();
    return nullptr;
}

Value did_dismiss_store(Controller& controller, const NSArray&)
{
    controller.didDismissStoreViewController(store_page(controller));
    return nullptr;
}

Value view_did_appear(Controller& controller, const NSArray&)
{
    controller.viewDidAppear(true);
    return nullptr;
}

Value did_rotate(Controller& controller, const NSArray& arguments)
{
    controller.didRotateFromInterfaceOrientation(static_cast<UIInterfaceOrientation>(arguments[0].intValue()));
    return nullptr;
}

Value web_view_did_finish_load(Controller& controller, const NSArray&)
{
    controller.webViewDidFinishLoad(controller.webView());
    return nullptr;
}

Value check_can_orientation(Controller& controller, const NSArray&)
{
    return controller.checkCanOrientation();
}

Value fail_ad_request(Controller& controller, const NSArray& arguments)
{
    controller.failAdRequest(NSError{arguments[0].string()});
    return nullptr;
}

Value set_pre_pause_status(Controller& controller, const NSArray& arguments)
{
    controller.setPrePauseStatusWithStatus(arguments[0].boolValue(), arguments[1].intValue());
    return nullptr;
}

Value set_ability_button_image(Controller& controller, const NSArray& arguments)
{
    const UIButton button = button_named(controller, arguments[0].string().text());
    controller.setAbilityButtonImage(button, arguments[1].string());
    return nullptr;
}

} // namespace

const std::vector<Operation>& operations()
{
    using enum ArgumentKind;
    static const std::vector<Operation> table{
        {"closeInAppWebView", {}, close_in_app_web_view},
        {"closeInAppApplication", {}, plain<&Controller::closeInAppApplication>},
        {"didDismissStoreViewController", {}, did_dismiss_store},
        {"viewDidAppear", {}, view_did_appear},
        {"didRotateFromInterfaceOrientation", {WholeNumber}, did_rotate},
        {"webViewDidFinishLoad", {}, web_view_did_finish_load},
        {"closeAction", {}, plain<&Controller::closeAction>},
        {"sendImpression", {}, plain<&Controller::sendImpression>},
        {"clickRequester", {}, plain<&Controller::clickRequester>},
        {"checkCanOrientation", {}, check_can_orientation},
        {"openNewWebAction", {}, plain<&Controller::openNewWebAction>},
        {"failAdRequest", {TextOrNull}, fail_ad_request},
        {"setPrePauseStatus", {Flag, WholeNumber}, set_pre_pause_status},
        {"removeAppStoreWindow", {}, plain<&Controller::removeAppStoreWindow>},
        {"setAbilityButtonImage", {ButtonName, TextOrNull}, set_ability_button_image},
    };
    return table;
}

Value call_operation(QoroVideoWebViewController& controller, std::string_view name, const NSArray& arguments)
{
    const auto operation = std::ranges::find(operations(), name, &Operation::name);
    return operation == operations().end() ? Value() : operation->call(controller, arguments);
}

} // namespace qoro
