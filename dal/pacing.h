#pragma once

// A seam for tools and tests, not for the application: the keyboard paces its queue by a pause
// held inside the queue lock after each record (10 ms), and the device search pauses between
// its two probes (500 ms). A tool that runs operations only to see what they queue, or a test,
// may shorten both; nothing in the library changes them.
#include <chrono>

namespace dal::pacing {

std::chrono::milliseconds keyboard();
std::chrono::milliseconds probes();
void set(std::chrono::milliseconds keyboard, std::chrono::milliseconds probes);

} // namespace dal::pacing
