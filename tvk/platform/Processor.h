#pragma once

/// TVK_PROCESSOR_X86: the vector sources for x86 processors are part of this build.
#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#define TVK_PROCESSOR_X86 1
#else
#define TVK_PROCESSOR_X86 0
#endif

#if TVK_PROCESSOR_X86 && defined(_MSC_VER)
#include <intrin.h>
#endif

namespace tvk::platform {

/// Whether the processor that runs this has SSE4.1 and what came before it.
inline bool hasSse41() {
#if !TVK_PROCESSOR_X86
    return false;
#elif defined(_MSC_VER)
    int registers[4];
    __cpuid(registers, 1);
    return (registers[2] & (1 << 19)) != 0;
#else
    return __builtin_cpu_supports("sse4.1") != 0;
#endif
}

/// Whether the processor that runs this has AVX2, and the system keeps its registers.
inline bool hasAvx2() {
#if !TVK_PROCESSOR_X86
    return false;
#elif defined(_MSC_VER)
    constexpr int OSXSAVE = 1 << 27;
    constexpr int AVX2 = 1 << 5;
    constexpr unsigned long long VECTOR_STATES = 6;  // of 16 and of 32 bytes
    int registers[4];
    __cpuid(registers, 1);
    if ((registers[2] & OSXSAVE) == 0 || (_xgetbv(0) & VECTOR_STATES) != VECTOR_STATES) {
        return false;
    }
    __cpuidex(registers, 7, 0);
    return (registers[1] & AVX2) != 0;
#else
    return __builtin_cpu_supports("avx2") != 0;
#endif
}

/// Whether the processor that runs this has AVX-512 F, BW, VL and VBMI2, and the system keeps its
/// registers.
inline bool hasAvx512() {
#if !TVK_PROCESSOR_X86
    return false;
#elif defined(_MSC_VER)
    constexpr int OSXSAVE = 1 << 27;
    constexpr unsigned int F_BW_VL = 1u << 16 | 1u << 30 | 1u << 31;
    constexpr int VBMI2 = 1 << 6;
    constexpr unsigned long long VECTOR_STATES = 0xE6;  // of 16, 32 and 64 bytes, and of masks
    int registers[4];
    __cpuid(registers, 1);
    if ((registers[2] & OSXSAVE) == 0 || (_xgetbv(0) & VECTOR_STATES) != VECTOR_STATES) {
        return false;
    }
    __cpuidex(registers, 7, 0);
    return (static_cast<unsigned int>(registers[1]) & F_BW_VL) == F_BW_VL &&
           (registers[2] & VBMI2) != 0;
#else
    return __builtin_cpu_supports("avx512f") != 0 && __builtin_cpu_supports("avx512bw") != 0 &&
           __builtin_cpu_supports("avx512vl") != 0 && __builtin_cpu_supports("avx512vbmi2") != 0;
#endif
}

/// Whether the processor that runs this has BMI1, BMI2, POPCNT and PCLMULQDQ.
inline bool hasBitOperations() {
#if !TVK_PROCESSOR_X86
    return false;
#elif defined(_MSC_VER)
    constexpr int PCLMULQDQ = 1 << 1;
    constexpr int POPCNT = 1 << 23;
    constexpr int BMI1 = 1 << 3;
    constexpr int BMI2 = 1 << 8;
    int registers[4];
    __cpuid(registers, 1);
    if ((registers[2] & (PCLMULQDQ | POPCNT)) != (PCLMULQDQ | POPCNT)) {
        return false;
    }
    __cpuidex(registers, 7, 0);
    return (registers[1] & (BMI1 | BMI2)) == (BMI1 | BMI2);
#else
    return __builtin_cpu_supports("bmi") != 0 && __builtin_cpu_supports("bmi2") != 0 &&
           __builtin_cpu_supports("popcnt") != 0 && __builtin_cpu_supports("pclmul") != 0;
#endif
}

}  // namespace tvk::platform
