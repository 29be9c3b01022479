#include "simulator/SimulatedText.h"

#include <algorithm>

namespace qoro
{

namespace
{

constexpr double CodePointWidth = 7;
constexpr double LineHeight = 16;

double code_points(const std::string& text)
{
    const auto begins_one = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; };
    return static_cast<double>(std::ranges::count_if(text, begins_one));
}

} // namespace

CGSize SimulatedText::measure(const NSString& text, const FontSpec&, CGSize box)
{
    if (!text)
        return {};
    const auto named = world_.text.empty() ? world_.text.end() : world_.text.find(text.text());
    const CGSize size =
        named == world_.text.end() ? CGSize{CodePointWidth * code_points(text.text()), LineHeight} : named->second;
    return {std::min(size.width, box.width), std::min(size.height, box.height)};
}

std::shared_ptr<const DecodedImage> SimulatedImages::decode(const NSData& bytes)
{
    const std::string_view content = bytes.view();
    const bool picture = content.starts_with("\x89PNG\r\n\x1a\n") || content.starts_with("\xff\xd8\xff");
    return picture ? picture_ : nullptr;
}

} // namespace qoro
