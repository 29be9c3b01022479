#include "record/TapedTag.h"

#include "kit/NetworkZone.h"
#include "platform/Platform.h"
#include "record/Values.h"

#include <chrono>
#include <cstdint>
#include <random>
#include <utility>

namespace qoro
{

NSDictionary tag_opening(Platform& platform, const OpenedTag::Tag& tag, const TagOptions& options)
{
    NSDictionary opening{{"zone", static_cast<int>(platform.shared<OpenNetworks>().open)},
                         {"band", options.resolver.band.width}};
    if (tag.text)
        detail::set_bytes(opening, "document", *tag.text);
    return opening;
}

OpenedTag::Tag opened_tag(Platform& platform, const NSDictionary& opening, const std::string& address,
                          TagOptions& options)
{
    platform.shared<OpenNetworks>().open = static_cast<NetworkZone>(opening["zone"].integer());
    options.resolver.band.width = opening["band"].doubleValue();
    if (auto text = detail::bytes_at(opening, "document"))
        return {.text = std::move(text)};
    return {.address = address};
}

TagOptions TapedTag::options(TagOptions real)
{
    if (real.support)
        real_ = real.support;
    real.support = this;
    real.clock = [&tape = tape_, clock = std::move(real.clock)] {
        const auto machine = [&clock] {
            const auto date = std::chrono::system_clock::now().time_since_epoch();
            return Value(clock ? clock() : std::chrono::duration<double>(date).count());
        };
        return tape.read("date", {}, machine).doubleValue();
    };
    real.random = [&tape = tape_, random = std::move(real.random)] {
        const auto machine = [&random] {
            return Value(static_cast<std::int64_t>(random ? random() : std::random_device{}()));
        };
        return static_cast<std::uint32_t>(tape.read("random", {}, machine).integer());
    };
    return real;
}

bool TapedTag::can_play(const std::string& type, const std::string& codec) const
{
    return tape_.read("canPlay", NSArray{type, codec}, [&] { return Value(real_->can_play(type, codec)); }).boolValue();
}

} // namespace qoro
