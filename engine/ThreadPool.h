#pragma once

#include "engine/Export.h"

#include <functional>

namespace ko::imagefx::engine
{

// The processors that this process may use, by its affinity mask; at least 1.
KORVELIMAGEENGINE_EXPORT int usableProcessors();

// The one pool of worker threads of the process, which grows as it is used and whose threads soon
// sleep when there is no job. Any thread may use it, also several at once.
// Calls work(0) to work(count - 1), each once, in any order and on up to `threads` threads, of
// which this one is one; returns when all are over. Before its part this thread runs the `errand`,
// if there is one, while others begin. Neither may throw.
void runParallel(int threads, int count, const std::function<void(int)> &work,
                 const std::function<void()> &errand = {});

} // namespace ko::imagefx::engine
