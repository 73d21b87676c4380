// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxCRC32.h"

#include "kxbench.h"
#include "plain_loops.h"

#if KXBENCH_ISAL
#include <isa-l/crc.h>
#endif
#if KXBENCH_LIBDEFLATE
#include <libdeflate.h>
#endif
#if KXBENCH_ZLIB
#include <zlib.h>
#endif

namespace {

using Function = std::uint32_t (*)(const void* data, unsigned long length, std::uint32_t previous);

struct Contender {
    const char *operation, *name;
    Function run, model;
};

#if KXBENCH_ISAL
std::uint32_t isal(const void* data, unsigned long length, std::uint32_t previous) {
    return crc32_gzip_refl(previous, static_cast<const unsigned char*>(data), length);
}
#endif
#if KXBENCH_LIBDEFLATE
std::uint32_t libdeflate(const void* data, unsigned long length, std::uint32_t previous) {
    return libdeflate_crc32(previous, data, length);
}
#endif
#if KXBENCH_ZLIB
std::uint32_t zlib(const void* data, unsigned long length, std::uint32_t previous) {
    return static_cast<std::uint32_t>(
        crc32_z(previous, static_cast<const unsigned char*>(data), length));
}
#endif

const Contender contenders[] = {
    {"calc", "kxUtils", kxCRC32::calc, plain::crc1Byte},
#if KXBENCH_ISAL
    {"calc", "ISA-L", isal, plain::crc1Byte},
#endif
#if KXBENCH_LIBDEFLATE
    {"calc", "libdeflate", libdeflate, plain::crc1Byte},
#endif
#if KXBENCH_ZLIB
    {"calc", "zlib", zlib, plain::crc1Byte},
#endif
    {"calc_bitwise", "kxUtils", kxCRC32::calc_bitwise, plain::crc1Byte},
    {"calc_bitwise", "plain loop", plain::crcBitwise, plain::crc1Byte},
    {"calc_halfbyte", "kxUtils", kxCRC32::calc_halfbyte, plain::crc1Byte},
    {"calc_halfbyte", "plain loop", plain::crcHalfByte, plain::crc1Byte},
    {"calc_1byte", "kxUtils", kxCRC32::calc_1byte, plain::crcBitwise},
    {"calc_1byte", "plain loop", plain::crc1Byte, plain::crcBitwise},
    {"calc_4bytes", "kxUtils", kxCRC32::calc_4bytes, plain::crc1Byte},
    {"calc_4bytes", "plain loop", plain::crc4Bytes, plain::crc1Byte},
    {"calc_8bytes", "kxUtils", kxCRC32::calc_8bytes, plain::crc1Byte},
    {"calc_8bytes", "plain loop", plain::crc8Bytes, plain::crc1Byte},
    {"calc_FNV1A_Jesteress", "kxUtils", kxCRC32::calc_FNV1A_Jesteress, plain::jesteress},
    {"calc_FNV1A_Jesteress", "plain loop", plain::jesteress, plain::jesteress},
};

const bool registered = [] {
    for (const Contender& c : contenders)
        for (const std::size_t size : kxbench::sizes) {
            const std::string& bytes = kxbench::randomBytes(size);
            const auto call = [&bytes](Function f) { return f(bytes.data(), bytes.size(), 0); };
            kxbench::contender(
                std::string("kxCRC32::") + c.operation, c.name, size,
                [=] { benchmark::DoNotOptimize(call(c.run)); },
                [=] { return call(c.run) == call(c.model); });
        }
    return true;
}();

}  // namespace
