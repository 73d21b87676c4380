// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Where the application is installed, what it is called, and how large things are on its screen.
#pragma once

#include <cstdint>
#include <string>

#include "kxExport.h"

/// Static functions only. The host initialises the class once, at start-up, with init().
///
/// A returned pointer points into one of the class's own strings and is valid until that value is
/// rebuilt or reassigned. An argument may be null only where its function says so.
///
/// The layout of an installation; `<base>` is getBaseDir():
///
///     <base>/bin/MAC                 executables and this library   getExeDir(), getBinDir()
///     <base>/bin/MAC/Qt/plugins      the window system's plug-ins   getQtPluginsDir()
///     <base>/lib/MAC                 libraries                      getLibDir()
///     <base>/lib/plugins/MAC         plug-ins                       getPluginsDir()
///     <base>/data, <base>/examples   unless shared ones exist       getDataDir(), getExamplesDir()
///
/// Threads: there are no locks. Functions that initialise or set something are for the main thread,
/// before other threads start. After that any thread may call the getters. The exceptions are
/// getBinDir(), getLibDir(), getPluginsDir() and getQtPluginsDir(), which rebuild their string at
/// every call: they are for one thread at a time.
///
/// Nothing is thrown but std::bad_alloc. Each value is then the old or the new one; call init()
/// again.
class KXUTILS_API kxPlatform {
public:
    // --- Start-up and installation layout --------------------------------------------------------

    /// Initialises everything from the path by which the application was started, its first
    /// command-line word. A relative path counts from the working directory.
    ///
    /// Sets all locale categories to "C". The application's name is the file name up to its first
    /// dot. The executable's directory is the canonical form of the path's directory part, and the
    /// base directory is two levels above that. If `<base>/bin/MAC/<name>` does not exist, the base
    /// directory is silently derived from the executable that the system reports as running. The
    /// working directory stays as it is, and no other thread sees it change.
    ///
    /// Each directory is the one that the working directory would be after entering it:
    ///
    ///     cannot be entered (missing, may not be searched)   the working directory
    ///     the path has no directory part ("/talo")           the working directory
    ///     longer than 2047 characters                        "", as before init
    ///     deleted, or out of reach from the root directory   "", as before init
    ///
    /// \warning A name without a slash, as shells pass it for a program that they found on PATH,
    /// counts from the working directory, wherever the program really is. A program started as
    /// `talo` takes the working directory for its own, and the directory two levels above it for
    /// its installation if that holds a `bin/MAC/talo`. Anybody who can write there then decides
    /// which data and plug-ins are loaded. Pass an absolute path if the working directory is not
    /// trusted.
    ///
    /// The preferences directory is below the home directory that "$HOME" names. It is created if
    /// it is missing; a failure to create it is not reported. If HOME is *empty*, it is
    /// `<base>/preferences`, and a message goes to standard error. If HOME is *not set*, "$HOME"
    /// stays unexpanded, an error is logged, and the preferences path starts with that literal
    /// text, below the working directory. So make sure that HOME is set.
    static void init(const char* path);

    /// Initialises only the name and the base directory, as they are passed in, for hosts that know
    /// their root. Sets all locale categories to "C". If `<root>/bin/MAC` does not exist, the name
    /// becomes "talo", the base directory becomes the working directory + "/../..", and a message
    /// goes to standard error. This check is not made for an application named "hesper".
    static void init(const char* root, const char* appName);

    /// Sets every locale category of the process to "C" and returns the result of setlocale(3).
    static const char* initLocale();

    /// The name of the platform in directory names: "MAC".
    static const char* getPlatform();

    /// The executable's directory and the base directory. They are empty before init() and if
    /// init() found no path; each call then logs an error.
    /// @{
    static const char* getExeDir();
    static const char* getBaseDir();
    /// @}

    /// The directory `name` among the data that all users share, if it exists there, and otherwise
    /// the one in the base directory. "" for null.
    static std::string getCommonDir(const char* name);

    /// getCommonDir("data") and getCommonDir("examples"), computed ONCE in the life of the process.
    /// If they are called before init(), they keep the answer for an empty base directory.
    /// @{
    static const char* getDataDir();
    static const char* getExamplesDir();
    /// @}

    /// See the layout above. These do not ask whether the directory exists, with one exception: for
    /// an application named "hesper", getBinDir() is `<base>/bin` if `<base>/bin/MAC` does not
    /// exist. getQtPluginsDir() is the result of getBinDir() + "/Qt/plugins".
    /// @{
    static const char* getBinDir();
    static const char* getLibDir();
    static const char* getPluginsDir();
    static const char* getQtPluginsDir();
    /// @}

    /// The user's directory for this application. It ends with a slash unless HOME was empty. ""
    /// before init(path).
    static const char* getPreferencesDir();

    /// The start and the end of a shared library's file name: "lib" and ".dylib".
    /// @{
    static const char* getSOPrefix();
    static const char* getSOSuffix();
    /// @}

    static bool isX64();  ///< always true

    /// Always 1, deliberately: not the number of processors of the machine.
    static std::uint64_t getNumCPUs();

    // --- Identity --------------------------------------------------------------------------------
    // Call these in this order: init(), edition flags and analysis mode, full name and year. A null
    // pointer is ignored.

    static void setAppName(const char* name);      ///< does not rebuild the version name
    static const char* getAppName();               ///< as set or found by init
    static void setFullAppName(const char* name);  ///< rebuilds the version name
    static void setDisplayVersionYearString(const char* year);  ///< rebuilds the version name

    /// Rebuilds the version name. It is the full name, or the application's name if there is no
    /// full name, or "TALOAnalysis" in analysis mode. If a year is set, a blank, the year and a
    /// blank follow. The trailing blank is deliberate.
    static void updateAppVersionName();

    /// The version name, or the application's name if the version name was never built. Deliberate:
    /// for an application *named* "TALOAnalysis" the result is "TALO NURBS Analysis", whatever the
    /// analysis mode is.
    static const char* getAppVersionName();

    static const char* getCompName();  ///< the maker's name: "Pelloran"

    /// Edition flags, false unless set. They are independent of each other, and the library does
    /// not read them.
    /// @{
    static void setTaloCompact(bool on);
    static bool isTaloCompact();
    static void setTaloStudio(bool on);
    static bool isTaloStudio();
    static void setTaloPlayer(bool on);
    static bool isTaloPlayer();
    /// @}

    static void setAnalysisMode(bool on);  ///< does not rebuild the version name
    static bool getAnalysisMode();         ///< false unless set

    // --- Display metrics -------------------------------------------------------------------------

    /// Chooses, for both axes, the greatest of the steps 96, 120, 144, 192 and 240 dpi that is not
    /// above `dpiX`. Below 96 dpi and, deliberately, from 10240 dpi on the step is 96. Scales the
    /// icon sizes to the step (at 96 dpi they are 16, 22 and 28 pixels; fractions are cut off) and
    /// prints the step on standard output. Deliberately, `dpiY` is ignored.
    ///
    /// Only the lower 32 bits of `dpiX` count, as a signed number: 2^32 + 144 means 144 dpi, and
    /// the values from 2^31 to 2^32 - 1 are negative and so give 96 dpi.
    static void setDpi(std::uint64_t dpiX, std::uint64_t dpiY = 0);
    /// The step that setDpi() has chosen, in dpi; 96 before its first call.
    /// @{
    static std::uint64_t getDpiX();
    static std::uint64_t getDpiY();
    /// @}
    /// The step that setDpi() has chosen, divided by 96.
    /// @{
    static double getDpiScaleX();
    static double getDpiScaleY();
    /// @}

    /// Icon sizes in pixels. The setters store them as they are passed in, until the next setDpi().
    /// @{
    static void setSmallIconSize(std::uint64_t x, std::uint64_t y);
    static void setMediumIconSize(std::uint64_t x, std::uint64_t y);
    static void setLargeIconSize(std::uint64_t x, std::uint64_t y);
    static std::uint64_t getSmallIconSizeX();
    static std::uint64_t getSmallIconSizeY();
    static std::uint64_t getMediumIconSizeX();
    static std::uint64_t getMediumIconSizeY();
    static std::uint64_t getLargeIconSizeX();
    static std::uint64_t getLargeIconSizeY();
    /// @}
    /// The small icon size + 4, in pixels.
    /// @{
    static std::uint64_t getTreeViewIconSizeX();
    static std::uint64_t getTreeViewIconSizeY();
    /// @}

private:
    static std::string _exe_dir;
    static std::string _base_dir;
    static std::string _app_name;
    static std::string _preferences_dir;
    static std::string _full_app_name;
    static std::string _version_year;
    static std::string _app_version_name;

    static bool _taloCompact;
    static bool _taloPrism;  // set by setTaloStudio; the member keeps this older name, deliberately
    static bool _taloPlayer;
    static bool _analysis_mode;

    static std::uint64_t _dpiX, _dpiY;
    static std::uint64_t _small_icon_sizeX, _small_icon_sizeY;
    static std::uint64_t _medium_icon_sizeX, _medium_icon_sizeY;
    static std::uint64_t _large_icon_sizeX, _large_icon_sizeY;
};
