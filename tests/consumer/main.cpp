// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Uses every public header, and something from the library with most of them.
#include <cached_ifstream.h>
#include <cached_ofstream.h>
#include <kxAlignedMemory.h>
#include <kxAnyConverter.h>
#include <kxBase64.h>
#include <kxCPUInfo.h>
#include <kxCRC32.h>
#include <kxCrypt.h>
#include <kxFile.h>
#include <kxFileExtension.h>
#include <kxFont.h>
#include <kxLog.h>
#include <kxMessage.h>
#include <kxPlatform.h>
#include <kxRandom.h>
#include <kxString.h>
#include <kxUtils.h>
#include <shader/defaultMaterial.h>

int main() {
    const kxMessage message(7, "answer", 42);
    int answer = 0;
    if (!getFromMessage(message, "answer", answer) || answer != 42) return 1;
    kxLog::info("%s has answer %d", kxFile::getFileName("/a/consumer").c_str(), answer);

    cached_ofstream counter;
    counter << kxString::setNum(1.5F) << kxUtils::decryptShader(__defaultMaterial_fp);
    void* const block = aligned_malloc(64, 64);
    aligned_free(block);
    kxFileExtension formats;
    formats.addFormat("Scene", {".osb"});
    const bool isWell = counter.size() == 3 + 780 && block && formats.checkFilename("A.OSB") &&
                        kxCRC32::calc_1byte("123456789", 9) == 0xCBF43926 &&
                        kxBase64::getEncodeSize(3) == 8 && kxCrypt({1}).code(0) == 0x06 &&
                        kxCPUInfo::_szFeatures[30] && kxRandom::s_index == 0;
    return isWell && kxPlatform::isX64() && !kxUtils::call("request") ? 0 : 1;
}
