#define KORVEL_SET sse41
#define KORVEL_ENTRY kernelsSse41
#define KORVEL_SET_NAME "sse4.1"
#define KORVEL_LANES 4
#include "engine/kernels/Kernels.inc"
