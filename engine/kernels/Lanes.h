// One number for each of KORVEL_LANES pixels, on g++'s vector types. Included by every unit into a
// namespace of its own, after its width and its instruction set are known; hence no include guard.
// Everything is inlined and local: the linker must find nothing that two units could share.

#define KORVEL_INLINE inline __attribute__((always_inline))

constexpr int lanes = KORVEL_LANES;

using FloatVector = float __attribute__((vector_size(4 * KORVEL_LANES)));
using IntVector = int32_t __attribute__((vector_size(4 * KORVEL_LANES)));
using WordVector = uint32_t __attribute__((vector_size(4 * KORVEL_LANES)));
using ShortVector = uint16_t __attribute__((vector_size(4 * KORVEL_LANES)));

template <class Vector, class Number>
static KORVEL_INLINE Vector load(const Number *from)
{
    Vector vector;
    __builtin_memcpy(&vector, from, sizeof vector);
    return vector;
}

template <class Vector, class Number>
static KORVEL_INLINE void store(Number *to, const Vector &vector)
{
    __builtin_memcpy(to, &vector, sizeof vector);
}

#if KORVEL_LANES == 16
static KORVEL_INLINE FloatVector smaller(FloatVector a, FloatVector b)
{
    return _mm512_min_ps(a, b);
}
static KORVEL_INLINE FloatVector larger(FloatVector a, FloatVector b)
{
    return _mm512_max_ps(a, b);
}
static KORVEL_INLINE FloatVector squareRoot(FloatVector a)
{
    return _mm512_sqrt_ps(a);
}
static KORVEL_INLINE FloatVector roundedDown(FloatVector a)
{
    return _mm512_floor_ps(a);
}
static KORVEL_INLINE WordVector gather(const uint32_t *texels, IntVector index)
{
    return (WordVector)_mm512_i32gather_epi32((__m512i)index, texels, 4);
}
#elif KORVEL_LANES == 8
static KORVEL_INLINE FloatVector smaller(FloatVector a, FloatVector b)
{
    return _mm256_min_ps(a, b);
}
static KORVEL_INLINE FloatVector larger(FloatVector a, FloatVector b)
{
    return _mm256_max_ps(a, b);
}
static KORVEL_INLINE FloatVector squareRoot(FloatVector a)
{
    return _mm256_sqrt_ps(a);
}
static KORVEL_INLINE FloatVector roundedDown(FloatVector a)
{
    return _mm256_floor_ps(a);
}
static KORVEL_INLINE WordVector gather(const uint32_t *texels, IntVector index)
{
    return (WordVector)_mm256_i32gather_epi32((const int *)texels, (__m256i)index, 4);
}
#else
#if KORVEL_LANES == 4 && defined(__SSE2__)
static KORVEL_INLINE FloatVector smaller(FloatVector a, FloatVector b)
{
    return _mm_min_ps(a, b);
}
static KORVEL_INLINE FloatVector larger(FloatVector a, FloatVector b)
{
    return _mm_max_ps(a, b);
}
static KORVEL_INLINE FloatVector squareRoot(FloatVector a)
{
    return _mm_sqrt_ps(a);
}
#else
// What the instructions above do with numbers that do not compare: the second one.
static KORVEL_INLINE FloatVector smaller(FloatVector a, FloatVector b)
{
    return a < b ? a : b;
}
static KORVEL_INLINE FloatVector larger(FloatVector a, FloatVector b)
{
    return a > b ? a : b;
}
static KORVEL_INLINE FloatVector squareRoot(FloatVector a)
{
    for (int i = 0; i < lanes; ++i) {
        a[i] = __builtin_sqrtf(a[i]);
    }
    return a;
}
#endif
#if KORVEL_LANES == 4 && defined(__SSE4_1__)
static KORVEL_INLINE FloatVector roundedDown(FloatVector a)
{
    return _mm_floor_ps(a);
}
#else
// For numbers that an integer holds, which all places and hues are.
static KORVEL_INLINE FloatVector roundedDown(FloatVector a)
{
    const FloatVector whole =
        __builtin_convertvector(__builtin_convertvector(a, IntVector), FloatVector);
    return whole > a ? whole - 1.0F : whole;
}
#endif
static KORVEL_INLINE WordVector gather(const uint32_t *texels, IntVector index)
{
    WordVector found;
    for (int i = 0; i < lanes; ++i) {
        found[i] = texels[index[i]];
    }
    return found;
}
#endif

// Sums of products of 16-bit numbers, as many as a ShortVector has, in 32 bits; in the order in
// which the processor makes them. Without a sign, since what lies behind a row may overflow.
struct ProductSum {
    WordVector low, high;
};

#if KORVEL_LANES >= 4 && defined(__SSE2__)
#if KORVEL_LANES == 16
#define KORVEL_INTEGER __m512i
#define KORVEL_INTRINSIC(name) _mm512_##name
#elif KORVEL_LANES == 8
#define KORVEL_INTEGER __m256i
#define KORVEL_INTRINSIC(name) _mm256_##name
#else
#define KORVEL_INTEGER __m128i
#define KORVEL_INTRINSIC(name) _mm_##name
#endif
// sum + a * weights[0] + b * weights[1]
static KORVEL_INLINE void addProducts(ProductSum &sum, const ShortVector &a, const ShortVector &b,
                                      const int16_t *weights)
{
    int32_t both;
    __builtin_memcpy(&both, weights, sizeof both);
    const auto first = (KORVEL_INTEGER)a;
    const auto second = (KORVEL_INTEGER)b;
    const KORVEL_INTEGER factors = KORVEL_INTRINSIC(set1_epi32)(both);
    sum.low += (WordVector)KORVEL_INTRINSIC(madd_epi16)(
        KORVEL_INTRINSIC(unpacklo_epi16)(first, second), factors);
    sum.high += (WordVector)KORVEL_INTRINSIC(madd_epi16)(
        KORVEL_INTRINSIC(unpackhi_epi16)(first, second), factors);
}
#undef KORVEL_INTEGER
#undef KORVEL_INTRINSIC

// The instructions above take four numbers of each half in turns.
static KORVEL_INLINE void storeInOrder(const ProductSum &sum, int32_t *target)
{
#if KORVEL_LANES == 16
    store(target, __builtin_shufflevector(sum.low, sum.high, 0, 1, 2, 3, 16, 17, 18, 19, 4, 5, 6, 7,
                                          20, 21, 22, 23));
    store(target + lanes, __builtin_shufflevector(sum.low, sum.high, 8, 9, 10, 11, 24, 25, 26, 27,
                                                  12, 13, 14, 15, 28, 29, 30, 31));
#elif KORVEL_LANES == 8
    store(target, __builtin_shufflevector(sum.low, sum.high, 0, 1, 2, 3, 8, 9, 10, 11));
    store(target + lanes, __builtin_shufflevector(sum.low, sum.high, 4, 5, 6, 7, 12, 13, 14, 15));
#else
    store(target, sum.low);
    store(target + lanes, sum.high);
#endif
}
#else
static KORVEL_INLINE void addProducts(ProductSum &sum, const ShortVector &a, const ShortVector &b,
                                      const int16_t *weights)
{
    const auto first = uint32_t(weights[0]);
    const auto second = uint32_t(weights[1]);
    for (int i = 0; i < lanes; ++i) {
        sum.low[i] += a[i] * first + b[i] * second;
        sum.high[i] += a[i + lanes] * first + b[i + lanes] * second;
    }
}

static KORVEL_INLINE void storeInOrder(const ProductSum &sum, int32_t *target)
{
    store(target, sum.low);
    store(target + lanes, sum.high);
}
#endif

// For every lane whether something holds.
struct Condition {
    IntVector v; // -1 or 0

    template <class Bool>
    explicit operator Bool() const
    {
        static_assert(sizeof(Bool) == 0,
                      "every pixel would go its own way here: write mix(), step() or "
                      "float(condition) instead of a branch");
        return {};
    }
};

// GLSL's float. Numbers that are the same for all pixels convert to it.
struct Float {
    FloatVector v;

    Float() = default;
    KORVEL_INLINE Float(FloatVector vector) : v(vector) {}
    KORVEL_INLINE Float(float number) : v(number - FloatVector{}) {}
    KORVEL_INLINE Float(double number) : Float(float(number)) {}
    KORVEL_INLINE Float(int number) : Float(float(number)) {}
    KORVEL_INLINE explicit Float(const Condition &condition)
        : v((FloatVector)(condition.v & (IntVector)(1.0F - FloatVector{})))
    {
    }
};

static KORVEL_INLINE Float operator+(const Float &a, const Float &b)
{
    return a.v + b.v;
}
static KORVEL_INLINE Float operator-(const Float &a, const Float &b)
{
    return a.v - b.v;
}
static KORVEL_INLINE Float operator*(const Float &a, const Float &b)
{
    return a.v * b.v;
}
static KORVEL_INLINE Float operator/(const Float &a, const Float &b)
{
    return a.v / b.v;
}
static KORVEL_INLINE Float operator-(const Float &a)
{
    return -a.v;
}
static KORVEL_INLINE Float &operator*=(Float &a, const Float &b)
{
    return a = a * b;
}
static KORVEL_INLINE Condition operator==(const Float &a, const Float &b)
{
    return {a.v == b.v};
}
static KORVEL_INLINE Condition operator!=(const Float &a, const Float &b)
{
    return {a.v != b.v};
}
static KORVEL_INLINE Condition operator<(const Float &a, const Float &b)
{
    return {a.v < b.v};
}
static KORVEL_INLINE Condition operator>(const Float &a, const Float &b)
{
    return {a.v > b.v};
}
static KORVEL_INLINE Condition operator<=(const Float &a, const Float &b)
{
    return {a.v <= b.v};
}
static KORVEL_INLINE Condition operator>=(const Float &a, const Float &b)
{
    return {a.v >= b.v};
}

static KORVEL_INLINE Float min(const Float &a, const Float &b)
{
    return smaller(b.v, a.v);
}
static KORVEL_INLINE Float max(const Float &a, const Float &b)
{
    return larger(b.v, a.v);
}
static KORVEL_INLINE Float abs(const Float &a)
{
    return (FloatVector)((IntVector)a.v & 0x7fffffff);
}
static KORVEL_INLINE Float sqrt(const Float &a)
{
    return squareRoot(a.v);
}
static KORVEL_INLINE Float floor(const Float &a)
{
    return roundedDown(a.v);
}
