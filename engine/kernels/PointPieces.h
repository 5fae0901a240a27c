// The pieces that only see their own pixel, each in a structure whose members are its uniforms.

#include "engine/kernels/Words.h"

struct BrightnessContrastPiece {
#include "imagefx/lib/shaders/fx_brightnesscontrast.frag"
};
struct ChannelShiftPiece {
#include "imagefx/lib/shaders/fx_channelshift.frag"
};
struct ColorFillPiece {
#include "imagefx/lib/shaders/fx_colorfill.frag"
};
struct ExposurePiece {
#include "imagefx/lib/shaders/fx_exposure.frag"
};
struct GrayScalePiece {
#include "imagefx/lib/shaders/fx_grayscale.frag"
};
struct HsvPiece {
#include "imagefx/lib/shaders/fx_hsv.frag"
};
struct LookupTablePiece {
#include "imagefx/lib/shaders/fx_lut.frag"
};
struct SelectiveSaturationPiece {
#include "imagefx/lib/shaders/fx_selectivesaturation.frag"
};
struct BatchPiece {
#include "imagefx/lib/shaders/fx_batch.frag"
};

struct DistancePiece {
#include "imagefx/lib/shaders/am_distance.frag"
};
struct HuePiece {
#include "imagefx/lib/shaders/am_hue.frag"
};
struct LuminancePiece {
#include "imagefx/lib/shaders/am_luminance.frag"
};

#include "engine/kernels/NoWords.h"

static KORVEL_INLINE Uniform::vec3 threeOf(const Pass &pass)
{
    return {pass.uniforms[0], pass.uniforms[1], pass.uniforms[2]};
}

static KORVEL_INLINE void prepare(BrightnessContrastPiece &piece, const Pass &pass)
{
    piece.u_brightness = pass.uniforms[0];
    piece.u_contrast = pass.uniforms[1];
}
static KORVEL_INLINE void prepare(ChannelShiftPiece &piece, const Pass &pass)
{
    piece.u_shift = threeOf(pass);
}
static KORVEL_INLINE void prepare(ColorFillPiece &piece, const Pass &pass)
{
    piece.u_color = {threeOf(pass), pass.uniforms[3]};
}
static KORVEL_INLINE void prepare(ExposurePiece &piece, const Pass &pass)
{
    piece.u_lut.table = pass.table;
}
static KORVEL_INLINE void prepare(GrayScalePiece &piece, const Pass &pass)
{
    piece.u_factors = threeOf(pass);
}
static KORVEL_INLINE void prepare(HsvPiece &piece, const Pass &pass)
{
    piece.u_parameters = threeOf(pass);
}
static KORVEL_INLINE void prepare(LookupTablePiece &piece, const Pass &pass)
{
    piece.u_lut.table = pass.table;
}
static KORVEL_INLINE void prepare(SelectiveSaturationPiece &piece, const Pass &pass)
{
    piece.u_table.table = pass.table;
}
static KORVEL_INLINE void prepare(BatchPiece &, const Pass &) {}

// The pixel of a picture besides the source.
template <class Piece>
static KORVEL_INLINE void prepareAt(Piece &, const vec4 *)
{
}
static KORVEL_INLINE void prepareAt(BatchPiece &piece, const vec4 *batch)
{
    piece.u_batch.pixel = batch;
}
