#define KORVEL_SET sse2
#define KORVEL_ENTRY kernelsSse2
#define KORVEL_SET_NAME "sse2"
#define KORVEL_LANES 4
#include "engine/kernels/Kernels.inc"
