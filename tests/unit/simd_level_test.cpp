#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "kit/services.h"
#include "zvf/abi.h"
#include "zvf/simd_level.h"

namespace zvf {
namespace {

void SetCap(const char* value) {
#ifdef _WIN32
    _putenv_s("ZVF_SIMD", value ? value : "");
#else
    if (value)
        setenv("ZVF_SIMD", value, 1);
    else
        unsetenv("ZVF_SIMD");
#endif
}

class SimdLevelTest : public ::testing::Test {
protected:
    void SetUp() override {
        const char* old = std::getenv("ZVF_SIMD");
        saved_ = old ? old : "";
        hadValue_ = old != nullptr;
    }
    void TearDown() override {
        SetCap(hadValue_ ? saved_.c_str() : nullptr);
    }
    std::string saved_;
    bool hadValue_ = false;
};

TEST_F(SimdLevelTest, FeaturesAndCapTakeTheLowerLevel) {
#if defined(__x86_64__) || defined(__i386__)
    const uint32_t all = cpu::mmx | cpu::sse | cpu::sse2 | cpu::ssse3 | cpu::sse41 | cpu::avx2;
    // AVX-512 kernels need the 64-bit register file.
#if defined(__x86_64__)
    const SimdLevel wide = SimdLevel::avx512;
#else
    const SimdLevel wide = SimdLevel::avx2;
#endif
    // A host that reports AVX2 but not bit 6 still gets AVX-512 where this
    // processor has it, as the host kit's own detection finds.
    const bool processorWide = (host::DetectProcessorFeatures() & cpu::avx512) != 0;
    const SimdLevel withoutBit6 = processorWide ? wide : SimdLevel::avx2;
    struct Case {
        const char* cap;  // null: unset
        uint32_t features;
        SimdLevel expected;
    } cases[] = {
        {nullptr, all, withoutBit6},              {nullptr, cpu::sse2, SimdLevel::sse2},
        {nullptr, cpu::avx2, SimdLevel::scalar},  // AVX2 without SSE2 is not a real processor
        {nullptr, 0, SimdLevel::scalar},          {"sse2", all, SimdLevel::sse2},
        {"scalar", all, SimdLevel::scalar},       {"avx2", cpu::sse2, SimdLevel::sse2},
        {"bogus", all, withoutBit6},              {"scalar", 0, SimdLevel::scalar},
        {"avx2", all, SimdLevel::avx2},           {"avx512", all, withoutBit6},
        {nullptr, cpu::sse2 | cpu::sse41, SimdLevel::sse2},  // no AVX2 reported: SSE2, whatever the processor has
        {nullptr, all | cpu::avx512, wide},       {"avx512", all | cpu::avx512, wide},
        {"avx2", all | cpu::avx512, SimdLevel::avx2},
        {"sse2", all | cpu::avx512, SimdLevel::sse2},
        {nullptr, cpu::sse2 | cpu::avx512, SimdLevel::sse2},  // AVX-512 without AVX2 is not either
        {"bogus", all | cpu::avx512, wide},
    };
    for (const Case& c : cases) {
        SetCap(c.cap);
        EXPECT_EQ(ChooseSimdLevel(c.features), c.expected) << (c.cap ? c.cap : "(unset)") << " " << c.features;
    }
#else
    EXPECT_EQ(ChooseSimdLevel(~0u), SimdLevel::scalar);
#endif
}

TEST(ProcessorAvx512, AgreesWithTheHostKitsDetection) {
#if defined(__x86_64__)
    EXPECT_EQ(ProcessorAvx512(), host::DetectProcessorFeatures() & cpu::avx512);
#else
    EXPECT_EQ(ProcessorAvx512(), 0u);
#endif
}

}  // namespace
}  // namespace zvf
