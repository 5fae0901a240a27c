// What Words.h is for the other pieces: here floats are the same for all pixels, and a texture
// gives sums of taps.
#define lowp
#define mediump
#define highp
#define varying
#define uniform
#define sampler2D TapSampler
#define vec2 Offset
#define vec4 TapSum
#define x r
#define y g
#define rgb colour()
#define main shade
