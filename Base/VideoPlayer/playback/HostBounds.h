#pragma once

#include "platform/UIKit.h"

#include <memory>

namespace qoro
{

/// The bounds of the host's root view; all zero without one.
inline CGRect hostBounds(const std::shared_ptr<UIViewController>& root)
{
    if (!root)
        return {};
    const CGSize size = root->view().bounds();
    return {0, 0, size.width, size.height};
}

} // namespace qoro
