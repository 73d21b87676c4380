// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxFile's functions for path names agree with models that follow the rules character by character.
#include "input.h"
#include "kxFile.h"
#include "kxFileExtension.h"
#include "reference/paths.h"
#include "support.h"

using kxfuzz::requireEqual;

namespace {

void checkPath(const std::string& path) {
    requireEqual("getFileName", kxFile::getFileName(path), reference::getFileName(path));
    requireEqual("getFilePath", kxFile::getFilePath(path), reference::getFilePath(path));
    requireEqual("getExtension", kxFile::getExtension(path), reference::getExtension(path));
    requireEqual("getBaseName", kxFile::getBaseName(path), reference::getBaseName(path));
    requireEqual("getExtensionFromFilter", kxFile::getExtensionFromFilter(path),
                 reference::getExtensionFromFilter(path));
    requireEqual("convertSeparators", kxFile::convertSeparators(path), path);
    requireEqual("convertToUnixSeparators", kxFile::convertToUnixSeparators(path),
                 reference::slashed(path));
    requireEqual("isRelative", kxFile::isRelative(path), reference::isRelative(path));
    requireEqual("isumlaut", kxFile::isumlaut(path), reference::isumlaut(path));
    std::string name = path;
    kxFile::makeValidFileName(name);
    requireEqual("makeValidFileName", name, reference::validFileName(path));
}

void checkPair(const std::string& first, const std::string& second) {
    requireEqual("setExtension", kxFile::setExtension(first, second),
                 reference::setExtension(first, second));
    const bool matches = reference::hasExtension(first, second);
    requireEqual("hasExtension", kxFile::hasExtension(first, second), matches);
    kxFileExtension formats;
    formats.addFormat("format", {second});
    requireEqual("checkFilename", formats.checkFilename(first), matches);
    requireEqual("abs2Rel", kxFile::abs2Rel(first, second), reference::abs2Rel(first, second));
    requireEqual("rel2Abs", kxFile::rel2Abs(first, second), reference::rel2Abs(first, second));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kxfuzz::Input input(data, size);
    // 1 to 255: `second` is padded to a length of about 2046, the greatest that some results may
    // have.
    const std::size_t padded = input.byte();
    const std::string common = input.text(), first = input.text();
    std::string second = input.text();

    checkPath(first);
    checkPath(common + first);
    if (padded != 0 && second.size() < 1900) second.resize(2046 - 32 + padded % 64, 'x');
    checkPair(common + first, second);
    checkPair(common + first, common + second);
    checkPair(common + second, common + first);
    checkPair(common, common + second);
    checkPair(common + second, common);
    checkPair('/' + common, '/' + second);
    checkPair('/' + common + first, '/' + common + second);
    return 0;
}
