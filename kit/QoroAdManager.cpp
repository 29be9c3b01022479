#include "platform/QoroAdManager.h"

#include "kit/RequestLimit.h"
#include "kit/WebText.h"
#include "platform/Platform.h"

#include <algorithm>
#include <array>
#include <utility>

namespace qoro
{

namespace
{

/// A pending request: its two actions, one of which will be called, and their retained targets.
struct Pending {
    Action action;
    Action fail_action;
    std::shared_ptr<Object> target;
    std::shared_ptr<Object> fail_target;

    Pending(const Action& success, const Action& failure)
        : action(success), fail_action(failure), target(success.target()), fail_target(failure.target())
    {
    }

    void answer(FetchAnswer&& fetched) const
    {
        QoroAdRequest request;
        request.strTargetURL = std::move(fetched.final_address);
        if (fetched.ok)
            request.respData = NSData(std::move(fetched.body));
        else
            request.error.text = std::move(fetched.error);
        Cause cause;
        cause.request = &request;
        (fetched.ok ? action : fail_action)(cause);
    }
};

} // namespace

QoroAdManager::QoroAdManager() = default;
QoroAdManager::~QoroAdManager() = default;

QoroAdManager& QoroAdManager::sharedInstance()
{
    return Platform::current().shared<QoroAdManager>();
}

void QoroAdManager::showLog(std::string_view message, ZulixLogTag level)
{
    Platform::current().emit(event::Logged{level, message});
}

bool QoroAdManager::bIsiPhone()
{
    return Platform::current().device().facts().phone;
}

NSString QoroAdManager::imei() const
{
    return Platform::current().device().facts().imei;
}

void QoroAdManager::connectToServerWithRequest(const NSString& address, const Action& action, const Action& failAction,
                                               bool, RequestPurpose purpose)
{
    Platform& platform = Platform::current();
    auto pending = std::make_shared<const Pending>(action, failAction);
    auto answer = [pending = std::move(pending), &platform](FetchAnswer fetched) {
        platform.dispatch([&] { pending->answer(std::move(fetched)); });
    };
    const auto fail = [&platform, &answer](const char* why) {
        platform.loop().post([answer = std::move(answer), why] { answer({false, why, "", ""}); });
    };
    if (const char* why = limit_ ? limit_->refusal(address.text(), purpose) : nullptr) {
        fail(why);
        return;
    }
    platform.emit(event::Requested{address, purpose});
    const auto supplied = purpose == RequestPurpose::Page && address ? pages_.find(address.text()) : pages_.end();
    if (supplied != pages_.end())
        platform.loop().post([answer = std::move(answer), body = supplied->second, address = supplied->first] {
            answer({true, "", body, address});
        });
    else if (address)
        platform.fetcher().fetch(address.text(), purpose == RequestPurpose::Page ? FetchKind::Page : FetchKind::Tracker,
                                 std::move(answer));
    else
        fail("no address");
}

void QoroAdManager::send_vast_tracker(const std::string& address, std::string_view event)
{
    if (limit_ && limit_->refusal(address, RequestPurpose::Tracking))
        return;
    Platform& platform = Platform::current();
    platform.emit(event::VastTracked{address, RequestPurpose::Tracking, event});
    platform.fetcher().fetch(address, FetchKind::Tracker, [](const FetchAnswer&) {});
}

void QoroAdManager::supply_page(const std::string& address, std::string html)
{
    pages_[address] = std::move(html);
}

void QoroAdManager::begin_ad(bool limited)
{
    limit_ = limited ? std::make_unique<RequestLimit>(Platform::current()) : nullptr;
}

void QoroAdManager::addExtraView(const std::shared_ptr<UIViewController>& controller)
{
    Platform::current().emit(event::ExtraViewAdded{});
    if (controller)
        extra_views_.push_back(controller);
}

void QoroAdManager::removeExtraView(const UIViewController* controller)
{
    Platform::current().emit(event::ExtraViewRemoved{});
    forget_extra_view(controller);
}

void QoroAdManager::forget_extra_view(const UIViewController* controller)
{
    const auto known = std::ranges::find(extra_views_, controller, &std::shared_ptr<UIViewController>::get);
    if (known == extra_views_.end())
        return;
    // Removed before destruction: the destructor may use the manager.
    const std::shared_ptr<UIViewController> gone = std::move(*known);
    extra_views_.erase(known);
}

NSURL QoroAdManager::store_page(const StoreItem& item) const
{
    struct Placeholder {
        std::string_view name;
        NSString StoreItem::*value;
    };
    constexpr std::array Placeholders{
        Placeholder{"{id}", &StoreItem::id},
        Placeholder{"{campaign}", &StoreItem::campaign},
        Placeholder{"{provider}", &StoreItem::provider},
        Placeholder{"{adProvider}", &StoreItem::ad_provider},
    };
    if (item.id.length() == 0)
        return nullptr;
    std::string address = store_page_;
    for (const Placeholder& placeholder : Placeholders) {
        const std::string value = percent_encoded((item.*placeholder.value).text());
        for (std::size_t at = 0; (at = address.find(placeholder.name, at)) != std::string::npos; at += value.size())
            address.replace(at, placeholder.name.size(), value);
    }
    return NSURL::URLWithString(address);
}

} // namespace qoro
