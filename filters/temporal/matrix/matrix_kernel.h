// Matrix's convolution kernel over one field.
#pragma once

#include <cstddef>
#include <cstdint>

#include "matrix_coefficients.h"
#include "matrix_narrow.h"
#include "zvf/field.h"
#include "zvf/simd_level.h"

namespace zvf::filters {

// Copies the pairs of the field's rows unchanged (the path for an invalid
// kernel and for a region one field line tall).
void CopyMatrixField(const FieldView& v);

// Applies the 3 x 3 kernel (or copies, when the kernel is invalid or the
// region is one field line tall) to luma and to each chroma channel of the
// field's rows. Horizontal taps are neighbouring samples of one channel (luma
// 2 bytes apart, chroma 4); vertical taps are the field lines above and
// below. The first line takes the span one line lower, so it comes out as
// the second line does; the left end replicates the first sample. Reads
// beyond the right end and the last line use the frame's own samples and are
// clamped by replication at the frame's edge, so nothing outside the frame is
// read. Luma sums are shifted right logically when normalising (negative
// responses turn white), chroma sums arithmetically; chroma gets 128 back;
// results are truncated and saturated. Works in place. Returns false, having
// written nothing, when its line buffers cannot be allocated. Every level
// gives the same bytes; the scalar one defines them.
bool ConvolveMatrixField(const FieldView& v, const MatrixCoefficients& c, SimdLevel level = SimdLevel::scalar);

// One output line, bytes [from, to) (multiples of 4), from three buffered
// lines (above, same, below). Each buffered line carries, before its first
// byte and after its last, the edge neighbours of every channel: bytes -3,
// -2, -1 hold the first Cb, Y and Cr; bytes to, to + 1 and to + 3 the next
// Y, Cb and Cr. The SSE2, AVX2 and AVX-512 versions are bit-exact with the
// scalar one; they read up to 4 bytes on either side of [from, to) as well.
using MatrixLineFn = void (*)(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                              const MatrixCoefficients& c);
void MatrixLine(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                const MatrixCoefficients& c);
void MatrixLineSse2(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                    const MatrixCoefficients& c);
void MatrixLineAvx2(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                    const MatrixCoefficients& c);
// MatrixLineAvx2's two paths, for callers that work out once per field
// which one a kernel takes: the 16-bit one for a kernel with a narrow form,
// and the 32-bit one for any kernel.
void MatrixNarrowLineAvx2(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                          const MatrixCoefficients& c, const MatrixNarrow& narrow);
void MatrixWideLineAvx2(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                        const MatrixCoefficients& c);
// The same three at AVX-512 (BW) on x86-64, 64 output bytes per step;
// elsewhere the AVX2 ones.
void MatrixLineAvx512(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                      const MatrixCoefficients& c);
void MatrixNarrowLineAvx512(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                            const MatrixCoefficients& c, const MatrixNarrow& narrow);
void MatrixWideLineAvx512(const uint8_t* const (&lines)[3], uint8_t* out, ptrdiff_t from, ptrdiff_t to,
                          const MatrixCoefficients& c);

// Where the SIMD 32-bit loops start each chroma sum: -128 times the
// coefficients' total re-centres the samples, the same integer as the sum
// of centred products; 128 re-centres the result, shifted up by 12 when
// normalising so that the arithmetic shift adds it exactly.
int32_t WideChromaStart(const MatrixCoefficients& c);

}  // namespace zvf::filters
