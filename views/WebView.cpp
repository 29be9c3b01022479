#include "views/NodeAccess.h"

namespace qoro
{

UIWebView UIWebView::create(WebListener& listener, PageKind kind)
{
    UIWebView view(std::make_shared<ViewNode>(ViewNode::Kind::WebView));
    view.node_->web = view.node_->platform.web_engines().make_web_engine(listener, kind);
    return view;
}

void UIWebView::loadHTMLString(const NSString& html, const NSURL& baseURL) const
{
    if (!node_ || !node_->web)
        return;
    node_->platform.emit(event::PageLoaded{html, baseURL.absoluteString()});
    node_->web->load_html(html, baseURL);
}

NSURL UIWebView::requestURL() const
{
    return node_ && node_->web ? node_->web->current_address() : NSURL();
}

void UIWebView::setScalesPageToFit(bool scales) const
{
    if (!node_ || !node_->web || node_->scales_page_to_fit == scales)
        return;
    node_->scales_page_to_fit = scales;
    node_->web->set_scales_page_to_fit(scales);
    node_->changed();
}

void UIWebView::callListeners(const std::string& event, const NSArray& callbacks, const NSDictionary& data) const
{
    if (node_ && node_->web)
        node_->web->call_listeners(event, callbacks, data);
}

WebEngine* UIWebView::engine() const
{
    return node_ ? node_->web.get() : nullptr;
}

} // namespace qoro
