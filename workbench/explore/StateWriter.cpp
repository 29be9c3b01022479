#include "workbench/explore/StateWriter.h"

#include <cstring>

namespace qoro
{

namespace
{

/// The finaliser of MurmurHash3: each bit of the result depends on every bit of the number.
std::uint64_t scrambled(std::uint64_t bits)
{
    bits ^= bits >> 33;
    bits *= 0xFF51AFD7ED558CCD;
    bits ^= bits >> 33;
    bits *= 0xC4CEB9FE1A85EC53;
    bits ^= bits >> 33;
    return bits;
}

/// Precedes each value, so that values of different types differ.
enum class Tag : std::uint8_t { Null, Flag, Integer, Double, Text, List, Mapping };

} // namespace

void StateWriter::mix(std::uint64_t bits)
{
    first_ = scrambled(first_ ^ bits);
    second_ = scrambled(second_ + std::rotl(bits, 32) * 0x9E3779B97F4A7C15);
}

void StateWriter::mix(std::string_view bytes)
{
    mix(bytes.size());
    while (!bytes.empty()) {
        std::uint64_t word = 0;
        const std::size_t count = std::min(bytes.size(), sizeof word);
        std::memcpy(&word, bytes.data(), count);
        mix(word);
        bytes.remove_prefix(count);
    }
}

void StateWriter::add_number(std::string_view name, std::uint64_t bits, double shown)
{
    if (ignores(name))
        return;
    mix(bits);
    if (text_)
        text_->append(name).append(" ").append(std::to_string(shown)).append("\n");
}

void StateWriter::add(std::string_view name, std::string_view text)
{
    if (ignores(name))
        return;
    mix(text);
    if (text_)
        text_->append(name).append(" \"").append(text).append("\"\n");
}

void StateWriter::add(std::string_view name, const NSString& text)
{
    add(name, static_cast<bool>(text));
    if (text)
        add(name, std::string_view(text.text()));
}

void StateWriter::add(std::string_view name, const Value& value)
{
    if (value.is_null()) {
        add(name, Tag::Null);
    } else if (value.is_bool()) {
        add(name, Tag::Flag);
        add(name, value.boolValue());
    } else if (value.is_integer()) {
        add(name, Tag::Integer);
        add(name, value.integer());
    } else if (value.is_double()) {
        add(name, Tag::Double);
        add(name, value.doubleValue());
    } else if (value.is_string()) {
        add(name, Tag::Text);
        add(name, std::string_view(value.text()));
    } else if (value.is_array()) {
        add(name, Tag::List);
        add(name, value.array().count());
        for (const Value& each : value.array())
            add(name, each);
    } else {
        add(name, Tag::Mapping);
        const NSDictionary mapping = value.dictionary();
        add(name, mapping.count());
        for (const NSDictionary::Entry& entry : mapping) {
            add(name, std::string_view(entry.key));
            add(name, entry.value);
        }
    }
}

void StateWriter::add(std::string_view name, CGSize size)
{
    add(name, size.width);
    add(name, size.height);
}

void StateWriter::add(std::string_view name, CGPoint point)
{
    add(name, point.x);
    add(name, point.y);
}

void StateWriter::add(std::string_view name, const CGRect& rect)
{
    add(name, rect.x);
    add(name, rect.y);
    add(name, rect.width);
    add(name, rect.height);
}

void StateWriter::add(std::string_view name, const UIColor& color)
{
    add(name, color.present);
    for (const double part : {color.red, color.green, color.blue, color.alpha})
        add(name, part);
}

StateKey StateWriter::key() const
{
    return {scrambled(first_ ^ second_), scrambled(second_)};
}

} // namespace qoro
