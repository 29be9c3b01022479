#pragma once

#include "desktop/glib/Owned.h"
#include "desktop/media/VideoFrame.h"
#include "desktop/screen/DrawnNode.h"
#include "desktop/screen/Picture.h"
#include "platform/Geometry.h"

#include <cstddef>
#include <optional>
#include <vector>

typedef struct _GtkWidget GtkWidget;

namespace qoro
{

/// Puts a video's next picture on an X window without a frame of GTK. For each frame, GTK's Cairo renderer clears an
/// image of the changed area, draws every layer of it and copies the image, which costs four times as much as putting
/// the picture, with what lies over it, where the X server reads it. Everything else remains GTK's. Main thread only.
class DirectVideo
{
public:
    /// @param surface the widget of the screen
    explicit DirectVideo(GtkWidget* surface);
    ~DirectVideo();
    DirectVideo(const DirectVideo&) = delete;
    DirectVideo& operator=(const DirectVideo&) = delete;

    /// To be called whenever GTK draws the screen.
    /// @param layers what it draws, from below
    void screen_drawn(std::vector<DrawnNode> layers);
    /// To be called when layers have moved, which GTK is going to draw. Until then, pictures are put where the last one
    /// was, under what lay over it.
    void screen_moved() { layers_.reset(); }
    /// Puts a picture in the place of another of the same size that GTK has drawn, opaque and uncut.
    /// @param layer index of the video among the layers that GTK has drawn
    /// @param corner of the picture, in points of the surface
    /// @return whether the picture is on the screen; otherwise GTK has to draw it
    bool put(const VideoFrame& frame, std::size_t layer, CGPoint corner);

private:
    struct Watch;
    struct Spot {
        std::size_t layer;
        CGPoint corner;

        friend bool operator==(const Spot&, const Spot&) = default;
    };
    /// What lies over the video, in pixels of the picture.
    struct Cover {
        Picture image;
        double x = 0;
        double y = 0;
    };

    /// Waits until the X server has read the previous picture.
    /// @return false if there is no server any more
    bool wait_for_server() const;
    bool prepare(const VideoFrame& frame, const Spot& spot);
    bool open_window();
    void add_cover(const DrawnNode& node, CGPoint corner, double scale);

    GtkWidget* const surface_;
    /// The X window, null if it cannot be drawn directly, and its id, 0 before the first picture.
    Picture window_;
    unsigned long window_id_ = 0;
    /// The picture as the X server reads it; null when the window cannot be drawn directly.
    Picture image_;
    /// Absent between screen_moved() and screen_drawn().
    std::optional<std::vector<DrawnNode>> layers_;
    /// Number of the request that put the previous picture.
    unsigned long last_put_ = 0;
    /// What image_, place_ and covers_ were made for; absent: they are out of date.
    std::optional<Spot> prepared_for_;
    /// Of the picture's corner, in pixels of the window.
    CGPoint place_;
    std::vector<Cover> covers_;
    Connections connections_;
};

} // namespace qoro
