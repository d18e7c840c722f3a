// Double arithmetic that gives the same bits on every build: x86-64, Linux
// and i686 Windows, whose compiler otherwise keeps doubles in x87 registers
// with extra precision. Only IEEE +, -, *, /, floor and fmod are used (all
// exactly specified), never the C library's transcendental functions, whose
// last bit differs between libraries.
#pragma once

#include <cstdint>

#if defined(__i386__) && defined(__GNUC__)
// Double rounding through 80-bit registers would change results: keep every
// function that does floating-point maths on SSE2 scalar instructions.
#define ZVF_EXACT_FLOAT __attribute__((target("sse2,fpmath=sse")))
#else
#define ZVF_EXACT_FLOAT
#endif

namespace zvf::filters {

// Nearest integer, ties to even, whatever the rounding mode.
ZVF_EXACT_FLOAT double RoundHalfEven(double v);

struct SinCos {
    double sin;
    double cos;
};
// sin and cos to within a few units in the last place for |x| up to 2^20;
// larger arguments are reduced modulo the double nearest 2 pi first.
// Non-finite x gives sin 0, cos 1.
ZVF_EXACT_FLOAT SinCos ExactSinCos(double x);

// atan2(y, x) in -pi..pi to within a few units in the last place; 0 for
// (0, 0) and for non-finite input.
ZVF_EXACT_FLOAT double ExactAtan2(double y, double x);

constexpr double kPi = 3.141592653589793;

}  // namespace zvf::filters
