#pragma once

#include "platform/UIKit.h"

#include <memory>

namespace qoro
{

/// Bounds of the host's root view, in points; all zero for null.
inline CGRect hostBounds(const std::shared_ptr<UIViewController>& root)
{
    if (!root)
        return {};
    const CGSize size = root->view().bounds();
    return {0, 0, size.width, size.height};
}

} // namespace qoro
