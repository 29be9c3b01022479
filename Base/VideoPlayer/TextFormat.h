#pragma once

#include "platform/Value.h"

#include <string>

namespace qoro
{

/// What "%@" writes for a text: a null one is "(null)".
inline std::string objectText(const NSString& text)
{
    return text ? text.text() : "(null)";
}

} // namespace qoro
