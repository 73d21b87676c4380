// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A text coded byte by byte, in place, as callers of kxCrypt do it.
#include "kxCrypt.h"

#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "kxbench.h"

#if KXBENCH_OPENSSL
#define OPENSSL_SUPPRESS_DEPRECATED  // the only RC4 that works without loading a provider
#include <openssl/rc4.h>
#endif

namespace {

const std::vector<unsigned char> key = {'S', 'e', 'c', 'r', 'e', 't'};

/// RC4, written in the plainest way.
struct Plain {
    std::array<unsigned char, 256> s;
    unsigned i = 0, j = 0;

    Plain() {
        for (unsigned n = 0; n < 256; ++n) s[n] = static_cast<unsigned char>(n);
        for (unsigned n = 0, k = 0; n < 256; ++n) {
            k = (k + s[n] + key[n % key.size()]) % 256;
            std::swap(s[n], s[k]);
        }
    }

    unsigned char step(unsigned char c) {
        i = (i + 1) % 256;
        j = (j + s[i]) % 256;
        std::swap(s[i], s[j]);
        return c ^ s[(s[i] + s[j]) % 256];
    }

    [[gnu::noinline]] unsigned char call(unsigned char c) { return step(c); }
};

using Bytes = std::vector<unsigned char>;

void codeByCalls(Plain& cipher, Bytes& bytes) {
    for (unsigned char& byte : bytes) byte = cipher.call(byte);
}

// Without calls, and with no state in memory but the permutation.
void codeInOneLoop(Plain& cipher, Bytes& bytes) {
    Plain local = cipher;
    for (unsigned char& byte : bytes) byte = local.step(byte);
    cipher = local;
}

void codeByKxCrypt(kxCrypt& cipher, Bytes& bytes) {
    for (unsigned char& byte : bytes) byte = cipher.code(byte);
}

#if KXBENCH_OPENSSL
struct OpenSsl {
    RC4_KEY state;
    OpenSsl() { RC4_set_key(&state, static_cast<int>(key.size()), key.data()); }
};

void codeByOpenSsl(OpenSsl& cipher, Bytes& bytes) {
    for (unsigned char& byte : bytes) RC4(&cipher.state, 1, &byte, &byte);
}
#endif

/// A row for coding `size` bytes with `cipher`, which continues from call to call.
template <class Cipher>
void add(const char* name, std::size_t size, const Cipher& cipher, void (*code)(Cipher&, Bytes&)) {
    const auto now = std::make_shared<Cipher>(cipher);
    const auto bytes = std::make_shared<Bytes>(size);
    kxbench::contender(
        "kxCrypt::code", name, size, [=] { code(*now, *bytes); },
        [=] {
            Cipher fresh = cipher;
            Plain plain;
            Bytes coded(size, 'x'), expected(size, 'x');
            code(fresh, coded);
            codeByCalls(plain, expected);
            return coded == expected;
        });
}

const bool registered = [] {
    for (const std::size_t size : {std::size_t{16}, std::size_t{1024}, std::size_t{65536}}) {
        add("kxUtils", size, kxCrypt(key), codeByKxCrypt);
        add("call per byte", size, Plain(), codeByCalls);
#if KXBENCH_OPENSSL
        add("OpenSSL RC4 per byte", size, OpenSsl(), codeByOpenSsl);
#endif
        add("limit one loop", size, Plain(), codeInOneLoop);
    }
    return true;
}();

}  // namespace
