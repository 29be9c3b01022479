#include "vast/Wrapping.h"

#include "vast/Texts.h"

#include <algorithm>

namespace qoro::vast
{

namespace
{

template <typename Item>
void append(std::vector<Item>& list, const std::vector<Item>& more)
{
    list.insert(list.end(), more.begin(), more.end());
}

void add(Ad& ad, const Ad& wrapper)
{
    append(ad.impressions, wrapper.impressions);
    append(ad.errors, wrapper.errors);
    append(ad.viewable.viewable, wrapper.viewable.viewable);
    append(ad.viewable.not_viewable, wrapper.viewable.not_viewable);
    append(ad.viewable.undetermined, wrapper.viewable.undetermined);
    append(ad.companions, wrapper.companions);
    append(ad.verifications, wrapper.verifications);
    append(ad.blocked_categories, wrapper.blocked_categories);
    append(ad.ignored, wrapper.ignored);
    if (!ad.linear || !wrapper.linear)
        return;
    append(ad.linear->trackers, wrapper.linear->trackers);
    append(ad.linear->click_tracking, wrapper.linear->click_tracking);
    append(ad.linear->custom_click, wrapper.linear->custom_click);
    append(ad.linear->icons, wrapper.linear->icons);
}

bool refuses(const Wrapping& wrapping, const Category& category)
{
    const std::string code = lower(category.code);
    const std::string authority = lower(category.authority);
    if (wrapping.blocked.contains({code, ""}) || wrapping.blocked.contains({code, authority}))
        return true;
    const auto first = wrapping.blocked.lower_bound({code, ""});
    return authority.empty() && first != wrapping.blocked.end() && first->first == code;
}

} // namespace

Wrapping::Wrapping(std::shared_ptr<const Ad> wrapper, std::string from, Chain around)
    : ad(std::move(wrapper)), address(std::move(from)), outer(std::move(around))
{
    for (const Category& category : ad->blocked_categories)
        blocked.emplace(lower(category.code), lower(category.authority));
}

int depth_of(const Chain& chain)
{
    int depth = 0;
    for (const Wrapping* each = chain.get(); each; each = each->outer.get())
        ++depth;
    return depth;
}

bool leads_through(const Chain& chain, const std::string& address)
{
    for (const Wrapping* each = chain.get(); each; each = each->outer.get())
        if (each->ad->onward->address == address)
            return true;
    return false;
}

bool permits_wrappers(const Chain& chain)
{
    for (const Wrapping* each = chain.get(); each; each = each->outer.get())
        if (!each->ad->onward->follow_additional_wrappers)
            return false;
    return true;
}

const Category* blocked_category(const Ad& ad, const Chain& chain)
{
    for (const Wrapping* each = chain.get(); each; each = each->outer.get()) {
        const auto found = std::ranges::find_if(ad.categories, [&](const auto& one) { return refuses(*each, one); });
        if (found != ad.categories.end())
            return &*found;
    }
    return nullptr;
}

Ad merged(Ad ad, const Chain& chain)
{
    for (const Wrapping* each = chain.get(); each; each = each->outer.get())
        add(ad, *each->ad);
    return ad;
}

std::vector<std::string> errors_of(const Ad& ad, const Chain& chain)
{
    std::vector<std::string> errors = ad.errors;
    for (const Wrapping* each = chain.get(); each; each = each->outer.get())
        append(errors, each->ad->errors);
    return errors;
}

} // namespace qoro::vast
