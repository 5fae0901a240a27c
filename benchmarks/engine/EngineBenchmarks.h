#pragma once

#include <QtCore/QSize>

namespace ko::imagefx::benchmarks
{

// The engine on pictures of that size: "engine/HSV/2", each effect and some stacks on one and on
// two threads, and "variant/HSV/opaque", what masks, blends and translucent pictures cost on one
// thread.
void registerEngineBenchmarks(const QSize &size);

} // namespace ko::imagefx::benchmarks
