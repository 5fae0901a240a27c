// The main shader with every blend mode.

#define KORVEL_COMPOSITION Normal
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION Add
#define KORVEL_BLEND "imagefx/lib/shaders/blend_add.frag"
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION Subtract
#define KORVEL_BLEND "imagefx/lib/shaders/blend_subtract.frag"
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION Difference
#define KORVEL_BLEND "imagefx/lib/shaders/blend_difference.frag"
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION Multiply
#define KORVEL_BLEND "imagefx/lib/shaders/blend_multiply.frag"
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION Divide
#define KORVEL_BLEND "imagefx/lib/shaders/blend_divide.frag"
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION Screen
#define KORVEL_BLEND "imagefx/lib/shaders/blend_screen.frag"
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION Overlay
#define KORVEL_BLEND "imagefx/lib/shaders/blend_overlay.frag"
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION HardLight
#define KORVEL_BLEND "imagefx/lib/shaders/blend_hardlight.frag"
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION SoftLight
#define KORVEL_BLEND "imagefx/lib/shaders/blend_softlight.frag"
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION LinearLight
#define KORVEL_BLEND "imagefx/lib/shaders/blend_linearlight.frag"
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION ColorDodge
#define KORVEL_BLEND "imagefx/lib/shaders/blend_colordodge.frag"
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION ColorBurn
#define KORVEL_BLEND "imagefx/lib/shaders/blend_colorburn.frag"
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION LinearBurn
#define KORVEL_BLEND "imagefx/lib/shaders/blend_linearburn.frag"
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION LightenOnly
#define KORVEL_BLEND "imagefx/lib/shaders/blend_lightenonly.frag"
#include "engine/kernels/Composition.h"
#define KORVEL_COMPOSITION DarkenOnly
#define KORVEL_BLEND "imagefx/lib/shaders/blend_darkenonly.frag"
#include "engine/kernels/Composition.h"
