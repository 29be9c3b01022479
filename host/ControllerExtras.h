#pragma once

#include "kit/ScriptExtras.h"

namespace qoro
{

class QoroVideoWebViewController;

/// What a page's script may know and do beyond the commands of the video ad's controller.
class ControllerExtras final : public ScriptExtras
{
public:
    /// @param ad must outlive this object
    explicit ControllerExtras(QoroVideoWebViewController& ad) : ad_(ad) {}

    NSString reason_to_ignore(std::string_view command) const override;
    NSString replay() override;
    std::vector<NamedControl> controls() const override;

private:
    QoroVideoWebViewController& ad_;
};

} // namespace qoro
