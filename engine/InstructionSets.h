#pragma once

#include "engine/kernels/Kernels.h"

#include <QtCore/QString>

#include <vector>

namespace ko::imagefx::engine
{

// The kernels that this processor and its operating system can run, the slowest first; never empty.
const std::vector<const Kernels *> &usableKernels();

// The ones in use: the fastest, unless useKernels() chose others. Any thread, like the next.
const Kernels &currentKernels();
// False, and nothing changes, when none of usableKernels() has that name.
bool useKernels(const QString &name);

} // namespace ko::imagefx::engine
