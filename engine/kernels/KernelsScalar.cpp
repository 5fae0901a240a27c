#define KORVEL_SET scalar
#define KORVEL_ENTRY kernelsScalar
#define KORVEL_SET_NAME "scalar"
#define KORVEL_LANES 1
#include "engine/kernels/Kernels.inc"
