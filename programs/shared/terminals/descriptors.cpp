#include "descriptors.h"

#include <algorithm>

#include <sys/resource.h>

bool allowDescriptors(int count)
{
    constexpr rlim_t others = 128;
    const rlim_t needed = static_cast<rlim_t>(std::max(count, 0)) + others;
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return false;
    if (limit.rlim_cur == RLIM_INFINITY || limit.rlim_cur >= needed)
        return true;
    limit.rlim_cur = std::min(needed, limit.rlim_max);
    return setrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur >= needed;
}
