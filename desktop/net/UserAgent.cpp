#include "desktop/net/UserAgent.h"

namespace qoro
{

const char* const UserAgent = "QoroVideoAd/" QORO_VERSION " (Linux)";

} // namespace qoro
