#pragma once

#include "host/OpenedTag.h"
#include "platform/Value.h"
#include "record/Tape.h"
#include "vast/MediaChoice.h"

#include <string>

namespace qoro
{

/// What the opening of a tag is recorded with: what a replay needs besides the recording's head.
NSDictionary tag_opening(Platform& platform, const OpenedTag::Tag& tag, const TagOptions& options);
/// Takes an opening for a replay.
/// @param address of the tag, as the recording's head has it
/// @param options receives what the opening contains
OpenedTag::Tag opened_tag(Platform& platform, const NSDictionary& opening, const std::string& address,
                          TagOptions& options);

/// The machine's part in a tag's session that is recorded or replayed: which files it can decode, the date and random
/// numbers pass through a tape. Outlives the opened tag.
class TapedTag final : private vast::MediaSupport
{
public:
    /// @param tape outlives this object
    explicit TapedTag(Tape& tape) : tape_(tape) {}

    /// Options for OpenedTag.
    /// @param real what the machine gives; absent functions as OpenedTag has them. On a replay without functions.
    TagOptions options(TagOptions real);

private:
    bool can_play(const std::string& type, const std::string& codec) const override;

    Tape& tape_;
    const vast::CommonMediaSupport common_;
    const vast::MediaSupport* real_ = &common_;
};

} // namespace qoro
