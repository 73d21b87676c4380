// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxUtils.h"

#include <dlfcn.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <vector>

#include "detail/bytes/little_endian.h"
#include "detail/numbers/truncate.h"
#include "detail/platform/browser.h"
#include "kxCrypt.h"

kxUtils::Callback kxUtils::_fp = nullptr;

void kxUtils::init(Callback callback) { _fp = callback; }

bool kxUtils::call(const char* request, kxMessage& message, int flags) {
    return _fp ? _fp(request, message, flags) : false;
}

bool kxUtils::call(const char* request, int flags) {
    kxMessage message;
    return call(request, message, flags);
}

int kxUtils::setenv(const char* name, const char* value) {
    if (!name || !value) return -1;
    return ::setenv(name, value, /*overwrite=*/1);
}

int kxUtils::unsetenv(const char* name) {
    if (!name) return -1;
    return ::unsetenv(name);
}

void* kxUtils::loadSharedLibrary(const std::string& path, bool lazy) {
    if (path.empty()) return nullptr;
    return dlopen(path.c_str(), (lazy ? RTLD_LAZY : RTLD_NOW) | RTLD_GLOBAL);
}

bool kxUtils::unloadSharedLibrary(void* handle) { return handle && dlclose(handle) == 0; }

void* kxUtils::resolveSymbol(void* handle, const std::string& name) {
    return dlsym(handle, name.c_str());
}

std::string kxUtils::getLastError() {
    const char* text = dlerror();
    return text ? text : "";
}

void kxUtils::openBrowser(const std::string& url) {
    // The status of the shell says nothing useful to a caller: the browser may be running already.
    [[maybe_unused]] const int status = std::system((kx::detail::browserCommand() + url).c_str());
}

bool kxUtils::findProcess(const std::string& /*name*/) { return false; }

void kxUtils::beep() { std::cout << "\a\n"; }

void kxUtils::printBT() {}

namespace {

// Waits until the processor clock changes, and returns the new value.
std::clock_t nextTick() {
    const std::clock_t start = std::clock();
    std::clock_t now = start;
    while (now == start) now = std::clock();
    return now;
}

double secondsSince(std::clock_t start) {
    return static_cast<double>(std::clock() - start) / 1000000.0;
}

}  // namespace

void kxUtils::calcMips(int& mips, int& sink) {
    const double overhead = secondsSince(nextTick());

    const std::clock_t start = nextTick();
    double sum = 0.0;
    // A double on purpose: its additions are half of the operations counted.
    // NOLINTNEXTLINE(cert-flp30-c,bugprone-float-loop-counter,clang-analyzer-security.FloatLoopCounter)
    for (double x = 0.123456789; x < 100000000.0; x += 1.0) sum += x * x;
    const double elapsed = secondsSince(start);

    const std::uint32_t bits = static_cast<std::uint32_t>(kx::detail::truncateToInt32(sum));
    sink = static_cast<int>(bits + 0xA9732580U);
    mips = kx::detail::truncateToInt32(200.0 / (overhead + elapsed));
}

std::string kxUtils::decryptShader(const unsigned char* block, bool lineFeed) {
    // The key is made one byte at a time, so that it stands nowhere in the library in one piece.
    static const std::vector<unsigned char> key = [] {
        std::vector<unsigned char> bytes;
        bytes.reserve(16);
        bytes.push_back('6');
        bytes.push_back('F');
        bytes.push_back('L');
        bytes.push_back('#');
        bytes.push_back('u');
        bytes.push_back('9');
        bytes.push_back('2');
        bytes.push_back('=');
        bytes.push_back('d');
        bytes.push_back('_');
        bytes.push_back('j');
        bytes.push_back(';');
        bytes.push_back('M');
        bytes.push_back('7');
        bytes.push_back('g');
        bytes.push_back('P');
        return bytes;
    }();

    const std::size_t size = kx::detail::loadLittleEndian32(block);
    kxCrypt cipher(key);
    std::string text(size, '\0');
    for (std::size_t k = 0; k < size; ++k) text[k] = static_cast<char>(cipher.code(block[4 + k]));
    if (lineFeed) text += '\n';
    return text;
}

std::string kxUtils::decryptShaderLF(const unsigned char* block) {
    return decryptShader(block, /*lineFeed=*/true);
}
