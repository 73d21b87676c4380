// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxPlatform.h"

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <iostream>
#include <string_view>
#include <utility>

#include "detail/files/make_path.h"
#include "detail/log/end.h"
#include "detail/paths/canonical.h"
#include "detail/platform/entered_directory.h"
#include "detail/platform/executable_path.h"
#include "kxFile.h"
#include "kxLog.h"

std::string kxPlatform::_exe_dir;
std::string kxPlatform::_base_dir;
std::string kxPlatform::_app_name;
std::string kxPlatform::_preferences_dir;
std::string kxPlatform::_full_app_name;
std::string kxPlatform::_version_year;
std::string kxPlatform::_app_version_name;
static const kx::detail::LogEnd _logEnd;  // destroyed before the name of the application

bool kxPlatform::_taloCompact = false;
bool kxPlatform::_taloPrism = false;
bool kxPlatform::_taloPlayer = false;
bool kxPlatform::_analysis_mode = false;

std::uint64_t kxPlatform::_dpiX = 96, kxPlatform::_dpiY = 96;
std::uint64_t kxPlatform::_small_icon_sizeX = 16, kxPlatform::_small_icon_sizeY = 16;
std::uint64_t kxPlatform::_medium_icon_sizeX = 22, kxPlatform::_medium_icon_sizeY = 22;
std::uint64_t kxPlatform::_large_icon_sizeX = 28, kxPlatform::_large_icon_sizeY = 28;

namespace {

constexpr const char* platformWord = "MAC";
constexpr std::string_view hesper = "hesper", analysisName = "TALOAnalysis";
constexpr const char* twoLevelsUp = "/../..";
constexpr std::size_t maxPath = 2047;  // of the working directory when it is read back

// What the working directory would be after entering `directory`, or the present one if `directory`
// is empty or cannot be entered.
std::string directoryEntered(const std::string& directory) {
    const auto entered = kx::detail::directoryAfterEntering(directory, maxPath);
    return kxFile::convertSeparators(entered ? *entered : kxFile::getCurrentDir());
}

// The installation root of the running executable, as the system knows it.
std::string baseDirOfRunningExecutable() {
    const std::string path = kx::detail::executablePath();
    if (path.empty()) return directoryEntered(std::string(".") + twoLevelsUp);
    const std::string canonical = kx::detail::canonicalPath(path);
    return directoryEntered(kxFile::getFilePath(canonical.empty() ? path : canonical) +
                            twoLevelsUp);
}

}  // namespace

// --- Start-up and installation layout ------------------------------------------------------------

void kxPlatform::init(const char* executable) {
    const std::string path = executable;  // a copy: it may be one of the strings changed here
    initLocale();
    _app_name = kxFile::getFileName(path);
    _app_name.resize(std::min(_app_name.find('.'), _app_name.size()));

    const std::string directory = kxFile::getFilePath(path);
    _exe_dir = directoryEntered(directory);
    _base_dir = directoryEntered(directory + twoLevelsUp);
    if (!kxFile::exists(_base_dir + "/bin/" + platformWord + '/' + _app_name))
        _base_dir = baseDirOfRunningExecutable();

    _preferences_dir = _base_dir + "/preferences";
    const std::string home = kxFile::expandFilename("$HOME");
    if (home.empty()) {
        std::fprintf(stderr, "Couldn't get home directory, using '%s', for preferences!\n",
                     _preferences_dir.c_str());
    } else {
        _preferences_dir = home;
        if (_preferences_dir.back() != '/') _preferences_dir += '/';
        _preferences_dir += "Library/Application Support/Pelloran/" + _app_name + '/';
    }
    // The directory is made under exactly the name announced. createPath would take a backslash,
    // which a home directory or a name may contain, for a slash.
    if (!kxFile::exists(_preferences_dir)) kx::detail::makePath(_preferences_dir);
}

void kxPlatform::init(const char* root, const char* appName) {
    initLocale();
    const std::string name = appName;  // a copy: it may be one of the strings changed here
    _base_dir = root;
    _app_name = name;
    if (_app_name == hesper) return;
    if (kxFile::exists(_base_dir + "/bin/" + platformWord)) return;
    _app_name = "talo";
    _base_dir = kxFile::getCurrentDir() + twoLevelsUp;
    std::fprintf(stderr, "Couldn't get valid talo root dir trying '%s'!\n", _base_dir.c_str());
}

const char* kxPlatform::initLocale() { return std::setlocale(LC_ALL, "C"); }

const char* kxPlatform::getPlatform() { return platformWord; }

const char* kxPlatform::getExeDir() {
    if (_exe_dir.empty()) kxLog::error("kxPlatform not initialized!");
    return _exe_dir.c_str();
}

const char* kxPlatform::getBaseDir() {
    if (_base_dir.empty()) kxLog::error("kxPlatform not initialized!");
    return _base_dir.c_str();
}

std::string kxPlatform::getCommonDir(const char* name) {
    if (!name) return {};
    std::string shared = std::string("/Users/Shared/Pelloran/TALO-10.0/") + name;
    if (kxFile::exists(shared)) return shared;
    return std::string(getBaseDir()) + '/' + name;
}

const char* kxPlatform::getDataDir() {
    static const std::string data_dir = getCommonDir("data");
    return data_dir.c_str();
}

const char* kxPlatform::getExamplesDir() {
    static const std::string examples_dir = getCommonDir("examples");
    return examples_dir.c_str();
}

const char* kxPlatform::getBinDir() {
    static std::string bin_dir;
    bin_dir = std::string(getBaseDir()) + "/bin/" + platformWord;
    if (_app_name == hesper && !kxFile::exists(bin_dir))
        bin_dir = std::string(getBaseDir()) + "/bin";
    return bin_dir.c_str();
}

const char* kxPlatform::getLibDir() {
    static std::string lib_dir;
    lib_dir = std::string(getBaseDir()) + "/lib/" + platformWord;
    return lib_dir.c_str();
}

const char* kxPlatform::getPluginsDir() {
    static std::string plugins_dir;
    plugins_dir = std::string(getBaseDir()) + "/lib/plugins/" + platformWord;
    return plugins_dir.c_str();
}

const char* kxPlatform::getQtPluginsDir() {
    static std::string plugins_dir;
    plugins_dir = std::string(getBinDir()) + "/Qt/plugins";
    return plugins_dir.c_str();
}

const char* kxPlatform::getPreferencesDir() { return _preferences_dir.c_str(); }

const char* kxPlatform::getSOPrefix() { return "lib"; }
const char* kxPlatform::getSOSuffix() { return ".dylib"; }
bool kxPlatform::isX64() { return true; }
std::uint64_t kxPlatform::getNumCPUs() { return 1; }

// --- Identity ------------------------------------------------------------------------------------

void kxPlatform::setAppName(const char* name) {
    if (name) _app_name = name;
}

const char* kxPlatform::getAppName() { return _app_name.c_str(); }

void kxPlatform::setFullAppName(const char* name) {
    if (!name) return;
    _full_app_name = name;
    updateAppVersionName();
}

void kxPlatform::setDisplayVersionYearString(const char* year) {
    if (!year) return;
    _version_year = year;
    updateAppVersionName();
}

void kxPlatform::updateAppVersionName() {
    // Stored only when it is complete, since memory may run out before.
    std::string name = _full_app_name.empty() ? _app_name : _full_app_name;
    if (_analysis_mode) name = analysisName;
    if (!_version_year.empty()) name += ' ' + _version_year + ' ';
    _app_version_name = std::move(name);
}

const char* kxPlatform::getAppVersionName() {
    if (_app_name == analysisName) return "TALO NURBS Analysis";
    return (_app_version_name.empty() ? _app_name : _app_version_name).c_str();
}

const char* kxPlatform::getCompName() { return "Pelloran"; }

void kxPlatform::setTaloCompact(bool on) { _taloCompact = on; }
bool kxPlatform::isTaloCompact() { return _taloCompact; }
void kxPlatform::setTaloStudio(bool on) { _taloPrism = on; }
bool kxPlatform::isTaloStudio() { return _taloPrism; }
void kxPlatform::setTaloPlayer(bool on) { _taloPlayer = on; }
bool kxPlatform::isTaloPlayer() { return _taloPlayer; }
void kxPlatform::setAnalysisMode(bool on) { _analysis_mode = on; }
bool kxPlatform::getAnalysisMode() { return _analysis_mode; }

// --- Display metrics -----------------------------------------------------------------------------

namespace {

// The greatest step that is not above `dpi` and not too far below it; the first step if there is
// none, as for 10240 and more.
int matchingStep(std::int32_t dpi) {
    constexpr int maxDistance = 9999;
    int best = 96;
    for (const int step : {120, 144, 192, 240})
        if (dpi >= step && dpi - step <= maxDistance) best = step;
    return best;
}

}  // namespace

void kxPlatform::setDpi(std::uint64_t dpiX, std::uint64_t /*dpiY*/) {
    const int step = matchingStep(static_cast<std::int32_t>(dpiX));
    std::cout << "Best Matching DPI: " + std::to_string(step) + '\n' << std::flush;

    _dpiX = _dpiY = static_cast<std::uint64_t>(step);
    const double scale = step / 96.0;
    const auto scaled = [scale](int size) { return static_cast<std::uint64_t>(size * scale); };
    _small_icon_sizeX = _small_icon_sizeY = scaled(16);
    _medium_icon_sizeX = _medium_icon_sizeY = scaled(22);
    _large_icon_sizeX = _large_icon_sizeY = scaled(28);
}

std::uint64_t kxPlatform::getDpiX() { return _dpiX; }
std::uint64_t kxPlatform::getDpiY() { return _dpiY; }
double kxPlatform::getDpiScaleX() { return static_cast<double>(_dpiX) / 96.0; }
double kxPlatform::getDpiScaleY() { return static_cast<double>(_dpiY) / 96.0; }

void kxPlatform::setSmallIconSize(std::uint64_t x, std::uint64_t y) {
    _small_icon_sizeX = x;
    _small_icon_sizeY = y;
}

void kxPlatform::setMediumIconSize(std::uint64_t x, std::uint64_t y) {
    _medium_icon_sizeX = x;
    _medium_icon_sizeY = y;
}

void kxPlatform::setLargeIconSize(std::uint64_t x, std::uint64_t y) {
    _large_icon_sizeX = x;
    _large_icon_sizeY = y;
}

std::uint64_t kxPlatform::getSmallIconSizeX() { return _small_icon_sizeX; }
std::uint64_t kxPlatform::getSmallIconSizeY() { return _small_icon_sizeY; }
std::uint64_t kxPlatform::getMediumIconSizeX() { return _medium_icon_sizeX; }
std::uint64_t kxPlatform::getMediumIconSizeY() { return _medium_icon_sizeY; }
std::uint64_t kxPlatform::getLargeIconSizeX() { return _large_icon_sizeX; }
std::uint64_t kxPlatform::getLargeIconSizeY() { return _large_icon_sizeY; }
std::uint64_t kxPlatform::getTreeViewIconSizeX() { return _small_icon_sizeX + 4; }
std::uint64_t kxPlatform::getTreeViewIconSizeY() { return _small_icon_sizeY + 4; }
