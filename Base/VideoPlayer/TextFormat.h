#pragma once

#include "platform/Value.h"

#include <string>

namespace qoro
{

/// The text as "%@" formats it: "(null)" for null.
inline std::string objectText(const NSString& text)
{
    return text ? text.text() : "(null)";
}

} // namespace qoro
