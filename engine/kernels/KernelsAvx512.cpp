#define KORVEL_SET avx512
#define KORVEL_ENTRY kernelsAvx512
#define KORVEL_SET_NAME "avx512"
#define KORVEL_LANES 16
#include "engine/kernels/Kernels.inc"
