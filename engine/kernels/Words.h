// Turns GLSL's words into C++ until NoWords.h: to be included around shader pieces alone.
#define lowp
#define mediump
#define highp
#define varying
#define uniform Uniform::
#define const static constexpr Uniform::
#define float Float
#define sampler2D Sampler
#define x r
#define y g
#define z b
#define rgb colour()
#define xyz swizzle<0, 1, 2>()
#define gbr swizzle<1, 2, 0>()
#define brg swizzle<2, 0, 1>()
#define wxx swizzle<3, 0, 0>()
#define wwy swizzle<3, 3, 1>()
#define www swizzle<3, 3, 3>()
#define main shade
