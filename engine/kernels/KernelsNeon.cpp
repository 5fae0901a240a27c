#define KORVEL_SET neon
#define KORVEL_ENTRY kernelsNeon
#define KORVEL_SET_NAME "neon"
#define KORVEL_LANES 4
#include "engine/kernels/Kernels.inc"
