#pragma once

#include <memory>
#include <string>

namespace qoro::test
{

struct Colour {
    int red = 0;
    int green = 0;
    int blue = 0;
};

/// Whether two colours look alike: no channel differs by more than the scaling of a video may make it differ.
bool alike(Colour a, Colour b);

/// A picture from a PNG file.
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
    /// The share (0 to 1) of a rectangle's pixels that look like a colour.
    double share_of(Colour colour, int x, int y, int width, int height) const;

private:
    struct Pixels;
    std::unique_ptr<Pixels> pixels_;
};

/// The share (0 to 1) of a rectangle's pixels that differ between two pictures.
double share_changed(const Picture& a, const Picture& b, int x, int y, int width, int height);

} // namespace qoro::test
