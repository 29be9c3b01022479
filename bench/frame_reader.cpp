// Measures any video player from outside: reads the frame number that bench's clip encodes as a bar code from the X
// server's picture, and records when each frame first appears.
//
//   frame_reader X Y WIDTH HEIGHT SECONDS [RATE]
//
// X Y WIDTH HEIGHT: the player's picture on the screen. RATE: the clip's frames per second, 30 by default. Reads for
// SECONDS from the first frame seen (gives up after 10 s without one), then prints one JSON object: time of the first
// frame (seconds of CLOCK_MONOTONIC), frames seen and missed, deviation of the frames from an even grid (median and
// 99th percentile, in ms), and the longest time between two frames (in ms). Deviation and longest time exclude the
// first second.
//
// The bar code: a strip a third of the way down the picture, sixteen fields of equal width, lowest bit first. The upper
// eight fields are the lower eight inverted, so that a torn or foreign picture never decodes to a number.

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XShm.h>
#include <sys/ipc.h>
#include <sys/shm.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <thread>
#include <vector>

namespace
{

constexpr int Fields = 16;

double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// One row of the screen, read repeatedly through shared memory (MIT-SHM).
class Row
{
public:
    Row(Display* display, int x, int y, int width) : display_(display), x_(x), y_(y)
    {
        const int screen = DefaultScreen(display);
        image_ = XShmCreateImage(display, DefaultVisual(display, screen),
                                 static_cast<unsigned>(DefaultDepth(display, screen)), ZPixmap, nullptr, &segment_,
                                 static_cast<unsigned>(width), 1);
        segment_.shmid = shmget(IPC_PRIVATE, static_cast<std::size_t>(image_->bytes_per_line), IPC_CREAT | 0600);
        segment_.shmaddr = image_->data = static_cast<char*>(shmat(segment_.shmid, nullptr, 0));
        segment_.readOnly = False;
        XShmAttach(display, &segment_);
        XSync(display, False);
        shmctl(segment_.shmid, IPC_RMID, nullptr);
    }

    /// The frame number in the row; absent without a valid bar code.
    std::optional<int> number()
    {
        XShmGetImage(display_, DefaultRootWindow(display_), image_, x_, y_, AllPlanes);
        unsigned bits = 0;
        for (int field = 0; field < Fields; ++field) {
            const int at = (2 * field + 1) * image_->width / (2 * Fields);
            const unsigned long pixel = XGetPixel(image_, at, 0);
            const unsigned green = static_cast<unsigned>(pixel >> 8) & 0xff;
            if (green > 96 && green < 160)
                return std::nullopt;
            bits |= (green >= 160 ? 1u : 0u) << field;
        }
        const unsigned low = bits & 0xff;
        const unsigned high = bits >> 8;
        if ((low ^ high) != 0xff)
            return std::nullopt;
        return static_cast<int>(low);
    }

private:
    Display* display_;
    int x_;
    int y_;
    XImage* image_ = nullptr;
    XShmSegmentInfo segment_{};
};

double percentile(std::vector<double> values, double share)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const auto at = static_cast<std::size_t>(std::ceil(share * static_cast<double>(values.size()))) - 1;
    return values[std::min(at, values.size() - 1)];
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 6 && argc != 7) {
        std::fprintf(stderr, "usage: frame_reader X Y WIDTH HEIGHT SECONDS [RATE]\n");
        return 2;
    }
    const int x = std::atoi(argv[1]);
    const int y = std::atoi(argv[2]);
    const int width = std::atoi(argv[3]);
    const int height = std::atoi(argv[4]);
    const double seconds = std::atof(argv[5]);
    const double frame_seconds = 1.0 / (argc == 7 ? std::atof(argv[6]) : 30.0);
    Display* display = XOpenDisplay(nullptr);
    if (!display || !XShmQueryExtension(display)) {
        std::fprintf(stderr, "frame_reader: no X display with shared memory\n");
        return 1;
    }

    Row row(display, x, y + height / 3, width);
    struct Seen {
        int number; // continues past the bar code's 255
        double at;
    };
    std::vector<Seen> seen;
    const double began = now();
    while (now() - (seen.empty() ? began : seen.front().at) < (seen.empty() ? 10.0 : seconds)) {
        if (const std::optional<int> number = row.number()) {
            const double at = now();
            if (seen.empty()) {
                seen.push_back({*number, at});
            } else if (const int step = (*number - seen.back().number) & 0xff; step != 0 && step < 128) {
                seen.push_back({seen.back().number + step, at});
            }
        }
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
    if (seen.empty()) {
        std::printf("{\"first\": null}\n");
        return 0;
    }

    // Playback settles within a second; the grid's origin is the median over the later frames.
    std::vector<double> origins;
    double longest = 0;
    for (std::size_t i = 1; i < seen.size(); ++i)
        if (seen[i].at - seen.front().at > 1) {
            origins.push_back(seen[i].at - frame_seconds * seen[i].number);
            longest = std::max(longest, seen[i].at - seen[i - 1].at);
        }
    const double origin = percentile(origins, 0.5);
    std::vector<double> strayed;
    strayed.reserve(origins.size());
    for (const double each : origins)
        strayed.push_back(std::abs(each - origin) * 1000);
    const int missed = seen.back().number - seen.front().number + 1 - static_cast<int>(seen.size());
    std::printf("{\"first\": %.4f, \"first_number\": %d, \"seen\": %zu, \"missed\": %d, \"jitter_p50\": %.2f, "
                "\"jitter_p99\": %.2f, \"longest\": %.2f}\n",
                seen.front().at, seen.front().number, seen.size(), missed, percentile(strayed, 0.5),
                percentile(strayed, 0.99), longest * 1000);
    XCloseDisplay(display);
    return 0;
}
