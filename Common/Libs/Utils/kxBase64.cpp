#include "kxBase64.h"

#include <cstdint>
#include <functional>
#include <string_view>

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
static_assert(alphabet.size() == 64);

constexpr unsigned char padding = 254;
constexpr unsigned char foreign = 255;
// Set in both of the above and in no value of the alphabet.
constexpr unsigned char noValue = 0xC0;

constexpr unsigned char byteOf(char c) { return static_cast<unsigned char>(c); }

// Built by rule, not typed in: a mistyped entry among 256 would pass review.
constexpr std::array<unsigned char, 256> makeMap() {
    std::array<unsigned char, 256> table{};
    for (auto& value : table) value = foreign;
    for (std::size_t i = 0; i < alphabet.size(); ++i)
        table[byteOf(alphabet[i])] = static_cast<unsigned char>(i);
    table['='] = padding;
    return table;
}
constexpr auto ruled = makeMap();
static_assert(ruled['A'] == 0 && ruled['Z'] == 25 && ruled['a'] == 26 && ruled['z'] == 51 &&
              ruled['0'] == 52 && ruled['9'] == 61 && ruled['+'] == 62 && ruled['/'] == 63);
static_assert(ruled['='] == padding && ruled['\0'] == foreign && ruled['-'] == foreign &&
              ruled[0xFF] == foreign);

constexpr char character(unsigned int sixBits) { return alphabet[sixBits & 63]; }

// Encodes whole groups of 3 bytes.
void encodeGroups(const unsigned char* data, unsigned long groups, char* out) {
    for (; groups != 0; --groups, data += 3, out += 4) {
        const unsigned int bits = static_cast<unsigned int>(data[0] << 16 | data[1] << 8 | data[2]);
        out[0] = character(bits >> 18);
        out[1] = character(bits >> 12);
        out[2] = character(bits >> 6);
        out[3] = character(bits);
    }
}

// Decodes groups of 4 characters of the alphabet up to the first group that holds anything else;
// returns how many groups that were.
unsigned long decodeGroups(const char* text, unsigned long groups, char* out) {
    const auto& map = kxBase64::_map;
    for (unsigned long group = 0; group < groups; ++group, text += 4, out += 3) {
        const unsigned int a = map[byteOf(text[0])], b = map[byteOf(text[1])],
                           c = map[byteOf(text[2])], d = map[byteOf(text[3])];
        if (((a | b | c | d) & noValue) != 0) return group;
        out[0] = static_cast<char>(a << 2 | b >> 4);
        out[1] = static_cast<char>(b << 4 | c >> 2);
        out[2] = static_cast<char>(c << 6 | d);
    }
    return groups;
}

// The string forms: `convert` is one of the raw forms, `getSize` what it needs.
unsigned long intoString(const char* in, unsigned long n, std::string& out,
                         unsigned long (*getSize)(unsigned long),
                         unsigned long (*convert)(const char*, unsigned long, char*)) {
    if (!in || n == 0) return 0;
    const std::less<const char*> before;
    if (!before(in, out.data()) && before(in, out.data() + out.size())) {
        // Resizing would pull the input away from under the conversion.
        const std::string copy(in, n);
        return intoString(copy.data(), n, out, getSize, convert);
    }
    out.resize(getSize(n));
    out.resize(convert(in, n, out.data()));
    return out.size();
}

}  // namespace

// Not constexpr itself: an exported inline variable would keep the library from being unloaded.
const std::array<unsigned char, 256> kxBase64::_map = ruled;

kxBase64::~kxBase64() = default;

unsigned long kxBase64::encode(const char* data, unsigned long n, char* out) {
    if (!data || n == 0 || !out) return 0;
    const auto* bytes = reinterpret_cast<const unsigned char*>(data);
    const unsigned long groups = n / 3, rest = n % 3;
    encodeGroups(bytes, groups, out);

    unsigned long length = 4 * groups;
    if (rest != 0) {
        const unsigned int first = bytes[n - rest], second = rest == 2 ? bytes[n - 1] : 0U;
        out[length++] = character(first >> 2);
        out[length++] = character(first << 4 | second >> 4);
        out[length++] = rest == 2 ? character(second << 2) : '=';
        out[length++] = '=';
    }
    out[length] = '\0';
    return length;
}

unsigned long kxBase64::encode(const char* data, unsigned long n, std::string& out) {
    return intoString(data, n, out, getEncodeSize, encode);
}

unsigned long kxBase64::encode(const std::string& in, std::string& out) {
    return encode(in.data(), in.size(), out);
}

unsigned long kxBase64::getEncodeSize(unsigned long n) { return 4 * (n / 3) + 4; }

unsigned long kxBase64::decode(const char* text, unsigned long n, char* out) {
    if (!text || n == 0 || !out) return 0;
    unsigned long written = 0;
    std::uint32_t bits = 0;
    int held = 0;        // characters in `bits`
    long allowance = 3;  // bytes a group may give; "=" takes one away from all groups to come
    for (unsigned long at = 0; at < n; ++at) {
        if (held == 0 && allowance == 3) {
            const unsigned long groups = decodeGroups(text + at, (n - at) / 4, out + written);
            at += 4 * groups;
            written += 3 * groups;
            if (at == n) break;
        }
        const unsigned char value = _map[byteOf(text[at])];
        if (value == foreign) continue;
        if (value == padding) --allowance;
        bits = bits << 6 | (value == padding ? 0U : value);
        if (++held < 4) continue;
        out[written++] = static_cast<char>(bits >> 16);
        if (allowance >= 2) out[written++] = static_cast<char>(bits >> 8);
        if (allowance >= 3) out[written++] = static_cast<char>(bits);
        bits = 0;
        held = 0;
    }
    return held == 0 ? written : 0;
}

unsigned long kxBase64::decode(const char* text, unsigned long n, std::string& out) {
    return intoString(text, n, out, getDecodeSize, decode);
}

unsigned long kxBase64::decode(const std::string& in, std::string& out) {
    return decode(in.data(), in.size(), out);
}

unsigned long kxBase64::getDecodeSize(unsigned long n) { return 3 * (n / 4) + 3; }

bool kxBase64::isBase64Char(char c) { return _map[byteOf(c)] != foreign; }

bool kxBase64::isBase64String(const std::string& s) {
    if (s.size() < 4 || s.size() % 4 != 0) return false;
    for (const char c : s)
        if (!isBase64Char(c)) return false;
    return true;
}
