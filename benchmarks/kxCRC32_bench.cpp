#include "kxCRC32.h"

#include "kxbench.h"
#include "plain_loops.h"

namespace {

using Function = std::uint32_t (*)(const void* data, unsigned long length, std::uint32_t previous);

struct Contender {
    const char *operation, *name;
    Function run, model;
};

const Contender contenders[] = {
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
