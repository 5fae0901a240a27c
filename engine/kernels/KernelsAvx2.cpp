#define KORVEL_SET avx2
#define KORVEL_ENTRY kernelsAvx2
#define KORVEL_SET_NAME "avx2"
#define KORVEL_LANES 8
#include "engine/kernels/Kernels.inc"
