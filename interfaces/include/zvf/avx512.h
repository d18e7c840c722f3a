// The AVX-512 intrinsics, for translation units compiled for AVX-512 only.
// GCC 12 takes the deliberately undefined pass-through operand of many
// 512-bit intrinsics (_mm512_undefined_epi32) for an uninitialised read and
// warns where they are inlined (its bug 105593), so the two warnings are
// turned off for the rest of the unit.
#pragma once

#include <immintrin.h>

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
