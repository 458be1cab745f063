#include "descriptors.h"

#include <algorithm>

#include <sys/resource.h>
#include <unistd.h>

Descriptor::~Descriptor()
{
    if (isOpen())
        ::close(m_number);
}

int allowDescriptors(int count)
{
    constexpr rlim_t others = 128;
    const rlim_t needed = static_cast<rlim_t>(std::max(count, 0)) + others;
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return count;
    if (limit.rlim_cur < needed) { // RLIM_INFINITY is the greatest of all
        const rlim_t before = limit.rlim_cur;
        limit.rlim_cur = std::min(needed, limit.rlim_max);
        if (setrlimit(RLIMIT_NOFILE, &limit) != 0)
            limit.rlim_cur = before;
    }
    return limit.rlim_cur >= needed ? count : static_cast<int>(limit.rlim_cur - std::min(limit.rlim_cur, others));
}
