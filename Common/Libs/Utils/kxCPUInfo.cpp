// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxCPUInfo.h"

#include "detail/cpu/cpuid.h"

const char* const kxCPUInfo::_szFeatures[32] = {
    "x87 FPU On Chip",
    "Virtual-8086 Mode Enhancement",
    "Debugging Extensions",
    "Page Size Extensions",
    "Time Stamp Counter",
    "RDMSR and WRMSR Support",
    "Physical Address Extensions",
    "Machine Check Exception",
    "CMPXCHG8B Instruction",
    "APIC On Chip",
    "Unknown1",
    "SYSENTER and SYSEXIT",
    "Memory Type Range Registers",
    "PTE Global Bit",
    "Machine Check Architecture",
    "Conditional Move/Compare Instruction",
    "Page Attribute Table",
    "36-bit Page Size Extension",
    "Processor Serial Number",
    "CFLUSH Extension",
    "Unknown2",
    "Debug Store",
    "Thermal Monitor and Clock Ctrl",
    "MMX Technology",
    "FXSAVE/FXRSTOR",
    "SSE Extensions",
    "SSE2 Extensions",
    "Self Snoop",
    "Multithreading Technology",
    "Thermal Monitor",
    "Unknown4",
    "Pending Break Enable",
};

kxCPUInfo::kxCPUInfo() : kxCPUInfo(kx::detail::readCpu(kx::detail::cpuid)) {}

kxCPUInfo::kxCPUInfo(const Fields& fields) : _fields(fields) {}

kxCPUInfo::~kxCPUInfo() = default;

// Made at the first call and not at start-up: the queries cost too much for a program that never
// asks.
kxCPUInfo& kxCPUInfo::getCPUInfo() {
    static kxCPUInfo cpuInfo;
    return cpuInfo;
}

bool kxCPUInfo::hasSSE2Support() const { return (_fields.featureWord >> 26 & 1) != 0; }

bool kxCPUInfo::hasSSE42Support() const { return _fields.sse42; }

bool kxCPUInfo::hasAVXSupport() const { return _fields.avx; }

bool kxCPUInfo::hasAVX2Support() const { return _fields.avx2; }

bool kxCPUInfo::hasAVX512Support() const { return _fields.avx2 && _fields.avx512; }
