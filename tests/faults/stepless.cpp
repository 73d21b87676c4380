// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Functions that neither allocate nor call the system, so nothing in them can fail: all public
// functions that have no row elsewhere.
#include <array>
#include <vector>

#include "kxAnyConverter.h"
#include "kxBase64.h"
#include "kxCPUInfo.h"
#include "kxCRC32.h"
#include "kxCrypt.h"
#include "kxFile.h"
#include "kxFileExtension.h"
#include "kxFont.h"
#include "kxLog.h"
#include "kxMessage.h"
#include "kxPlatform.h"
#include "kxString.h"
#include "kxUtils.h"
#include "operations.h"

namespace {

const std::string longName = 'n' + part, longText = "12345" + part;

void message() {
    static kxMessage record(7, longName, longText);
    record.setId(8);
    static_cast<void>(record.id());
    record.get(longName);
    record.get(longText);
    record.exists(longName);
    record.getMap();
    record.remove(longName);
    record.clear();
    kxMessage::printBT();
    const kxMessage empty, numbered(7);
}

void conversion() {
    boost::any value;
    kxAnyConverter::fromString(longName, longText, value);
}

void formats() {
    static kxFileExtension registry = [] {
        kxFileExtension formats;
        formats.addFormat(longName, {longText});
        return formats;
    }();
    registry.hasExtension(longText);
    registry.checkFilename("a." + longText.substr(0, 5));  // fits into the string itself
    registry.subFormat(longName);
}

void codecs() {
    std::array<char, 200> out{};
    const char* const in = longText.data();
    const unsigned long size = longText.size();
    kxBase64::decode(out.data(), kxBase64::encode(in, size, out.data()), out.data());
    kxBase64::getEncodeSize(size);
    kxBase64::getDecodeSize(size);
    kxBase64::isBase64Char('a');
    kxBase64::isBase64String(longText);
    for (auto* const calc :
         {kxCRC32::calc, kxCRC32::calc_bitwise, kxCRC32::calc_halfbyte, kxCRC32::calc_1byte,
          kxCRC32::calc_4bytes, kxCRC32::calc_8bytes, kxCRC32::calc_FNV1A_Jesteress})
        calc(in, size, 0);
    kxFile::getID(in, static_cast<std::uint32_t>(size));
    static kxCrypt cipher({'K', 'e', 'y'});
    cipher.code(0);
    cipher.reset();
}

void text() {
    kxString::startsWith(longText, "1");
    kxString::endsWith(longText, "x");
    kxString::toFloat(longText);
    kxString::setNum(-1.23456e-30F);
    kxString::getDoubleOption(longText);
}

void paths() {
    kxFile::init();
    kxFile::isRelative(longName);
    kxFile::hasExtension(longName, "x");
    kxFile::isumlaut(longName);
    static std::string name = longName + ":?";
    kxFile::makeValidFileName(name);
    kxFile::convertStreamPosToStreamOff(5);
}

void hear(const char* /*text*/) {}

void log() {
    static std::string buffer;
    kxLog::infoNR("%s", "text");
    kxLog::warningNR("%s", "text");
    kxLog::errorNR("%s", "text");
    kxLog::getLogFile();
    kxLog::getLastError();
    kxLog::clearLastError();
    kxLog::setInfoCB(hear);
    kxLog::setWarningCB(hear);
    kxLog::setErrorCB(hear);
    kxLog::enableOutputBuffer(buffer);
    kxLog::enableOutputStream(nullptr);
    kxLog::setLogFormat(1);
    kxLog::setLogFormat(2);
    kxLog::disableOutputStream();
    kxLog::disableOutputBuffer();
    kxLog::setErrorCB(nullptr);
    kxLog::setWarningCB(nullptr);
    kxLog::setInfoCB(nullptr);
    kxLog::_add_time_stamp = false;
}

void identity() {
    kxPlatform::initLocale();
    kxPlatform::getPlatform();
    kxPlatform::getAppName();
    kxPlatform::getAppVersionName();
    kxPlatform::getCompName();
    kxPlatform::getPreferencesDir();
    kxPlatform::getSOPrefix();
    kxPlatform::getSOSuffix();
    kxPlatform::getNumCPUs();
    kxPlatform::isX64();
    kxPlatform::setTaloCompact(kxPlatform::isTaloCompact());
    kxPlatform::setTaloStudio(kxPlatform::isTaloStudio());
    kxPlatform::setTaloPlayer(kxPlatform::isTaloPlayer());
    kxPlatform::setAnalysisMode(kxPlatform::getAnalysisMode());
}

void display() {
    kxPlatform::getDpiX();
    kxPlatform::getDpiY();
    kxPlatform::getDpiScaleX();
    kxPlatform::getDpiScaleY();
    kxPlatform::setSmallIconSize(kxPlatform::getSmallIconSizeX(), kxPlatform::getSmallIconSizeY());
    kxPlatform::setMediumIconSize(kxPlatform::getMediumIconSizeX(),
                                  kxPlatform::getMediumIconSizeY());
    kxPlatform::setLargeIconSize(kxPlatform::getLargeIconSizeX(), kxPlatform::getLargeIconSizeY());
    kxPlatform::getTreeViewIconSizeX();
    kxPlatform::getTreeViewIconSizeY();
    std::array<unsigned char, 3UL * 20 * 7> image{};
    kxFont::drawText(image.data(), "ab", 20, 0xFFFFFF);
}

void processor() {
    const kxCPUInfo& info = kxCPUInfo::getCPUInfo();
    info.hasSSE2Support();
    info.hasSSE42Support();
    info.hasAVXSupport();
    info.hasAVX2Support();
    info.hasAVX512Support();
    const kxCPUInfo another;
}

void services() {
    kxUtils::init(nullptr);
    kxUtils::call("request");
    kxUtils::unsetenv("KXTEST_NO_VARIABLE");
    kxUtils::setenv(nullptr, "");
    kxUtils::getLastError();
    // It stays loaded, so that it is not the library whose loading is tested.
    static void* const library = kxUtils::loadSharedLibrary(KX_CONSUMER_PLUGIN, /*lazy=*/true);
    kxUtils::resolveSymbol(library, "kxOwnValue");
    kxUtils::unloadSharedLibrary(nullptr);
    kxUtils::findProcess(longName);
    kxUtils::printBT();
    kxUtils::beep();
    int mips = 0, sink = 0;
    kxUtils::calcMips(mips, sink);
}

template <void (*function)()>
void run(kxtest::Attempt& attempt) {
    attempt.run(function);
    EXPECT_FALSE(attempt.failed());
}

}  // namespace

const std::vector<Operation> steplessOperations = {
    {"Message", run<message>, noSteps},   {"Conversion", run<conversion>, noSteps},
    {"Formats", run<formats>, noSteps},   {"Codecs", run<codecs>, noSteps},
    {"Text", run<text>, noSteps},         {"Paths", run<paths>, noSteps},
    {"Log", run<log>, noSteps},           {"Identity", run<identity>, noSteps},
    {"Display", run<display>, noSteps},   {"Processor", run<processor>, noSteps},
    {"Services", run<services>, noSteps},
};
