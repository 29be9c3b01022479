#pragma once

#include <memory>
#include <string>

namespace qoro::test
{

/// A colour of 8 bits per channel.
struct Colour {
    int red = 0;
    int green = 0;
    int blue = 0;
};

/// Whether no channel of two colours differs by more than the scaling of a video may change it.
bool alike(Colour a, Colour b);

/// A picture read from a PNG file.
class Picture
{
public:
    explicit Picture(const std::string& png);
    ~Picture();
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    int width() const;
    int height() const;
    Colour at(int x, int y) const;
    /// Fraction (0 to 1) of a rectangle's pixels that resemble a colour.
    double share_of(Colour colour, int x, int y, int width, int height) const;

private:
    struct Pixels;
    std::unique_ptr<Pixels> pixels_;
};

/// Fraction (0 to 1) of a rectangle's pixels that differ between two pictures.
double share_changed(const Picture& a, const Picture& b, int x, int y, int width, int height);

} // namespace qoro::test
