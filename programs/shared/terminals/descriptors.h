#pragma once

/**
 * Lets this process open so many more files and sockets, beside some hundred that it may have already: raises its own
 * limit, which many systems set to 1,024, as far as the system allows a process to raise it.
 *
 * @return whether the limit is that high now
 */
bool allowDescriptors(int count);
