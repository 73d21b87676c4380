// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Where the application is installed, who it is, and how its screen is measured.
#pragma once

#include <cstdint>
#include <string>

#include "kxExport.h"

/// Static functions only; the host initialises the class once at start-up with init().
///
/// Pointers returned point into the class's own strings and stay valid until that value is rebuilt
/// or reassigned. A null pointer is allowed only where it is said so.
///
/// Threads: no locks. What initialises or sets is for the main thread, before others start. After
/// that any thread may call the getters, except getBinDir, getLibDir, getPluginsDir and
/// getQtPluginsDir, which rebuild their string at every call: one thread at a time.
///
/// Nothing but std::bad_alloc is thrown; each value is then the old or the new one, and init is to
/// be called again.
class KXUTILS_API kxPlatform {
public:
    // --- Start-up and installation layout --------------------------------------------------------
    //
    //     <base>/bin/MAC/<application>    executables and this library (getExeDir, getBinDir)
    //     <base>/lib/MAC                  getLibDir
    //     <base>/lib/plugins/MAC          getPluginsDir
    //     <base>/data, <base>/examples    getDataDir, getExamplesDir, unless shared ones exist

    /// Initialises everything from the path by which the application was started (its first
    /// command-line word; a relative one counts from the working directory).
    ///
    /// Sets all locale categories to "C". The application's name is the file name up to its first
    /// dot; the executable's directory is the canonical directory part; the base directory is two
    /// levels above. If `<base>/bin/MAC/<name>` does not exist, the base directory is taken from
    /// the executable that the system says is running, silently. The working directory itself stays
    /// as it is, and nobody sees it change meanwhile.
    ///
    /// The directories are what the working directory would be after entering them:
    ///
    ///     cannot be entered (missing, may not be searched)   the working directory
    ///     the path has no directory part ("/talo")           the working directory
    ///     longer than 2047 characters                        "", as before init
    ///     deleted, or out of reach from the root directory   "", as before init
    ///
    /// \warning A name without a slash, as shells pass it for a program that they found on PATH,
    /// counts from the working directory, wherever the program really is: started as `talo`, it
    /// takes the working directory for its own, and the directory two levels above for its
    /// installation if that holds a `bin/MAC/talo`. Whoever can write there then decides which data
    /// and plug-ins are loaded. Pass an absolute path where the working directory is not trusted.
    ///
    /// The preferences directory is below the home directory as "$HOME" names it, and is created if
    /// it is missing; a failure to create it is not reported. Where HOME is *empty*, it is
    /// `<base>/preferences`, with a message on standard error. Where HOME is *not set*, "$HOME"
    /// stays unexpanded (the log says so) and the preferences path starts with that literal text,
    /// below the working directory: make sure that HOME is set.
    static void init(const char* path);

    /// Initialises name and base directory only, as passed, for hosts that know their root. Sets
    /// all locale categories to "C". Where `<root>/bin/MAC` does not exist, the name becomes "talo"
    /// and the base directory the working directory + "/../..", with a message on standard error;
    /// an application named "hesper" is let pass.
    static void init(const char* root, const char* appName);

    /// Sets every locale category of the process to "C"; returns what setlocale(3) returns.
    static const char* initLocale();

    /// The platform's word in directory names: "MAC".
    static const char* getPlatform();

    /// The executable's directory and the base directory; empty before init, and where init found
    /// no path, which each call then logs as an error.
    /// @{
    static const char* getExeDir();
    static const char* getBaseDir();
    /// @}

    /// The directory `name` among the data that all users share, if that exists, otherwise in the
    /// base directory. "" for null.
    static std::string getCommonDir(const char* name);

    /// getCommonDir("data") and getCommonDir("examples"), computed ONCE in the life of the process:
    /// asked before init, they keep the answer for an empty base directory.
    /// @{
    static const char* getDataDir();
    static const char* getExamplesDir();
    /// @}

    /// See the layout above; whether the directory exists is not asked. One exception: for an
    /// application named "hesper", getBinDir is `<base>/bin` where `<base>/bin/MAC` does not exist.
    /// getQtPluginsDir is `/Qt/plugins` in what getBinDir answers.
    /// @{
    static const char* getBinDir();
    static const char* getLibDir();
    static const char* getPluginsDir();
    static const char* getQtPluginsDir();
    /// @}

    /// The user's directory for this application; ends with a slash unless HOME was empty. ""
    /// before init(path).
    static const char* getPreferencesDir();

    /// Start and end of a shared library's file name: "lib" and ".dylib".
    /// @{
    static const char* getSOPrefix();
    static const char* getSOSuffix();
    /// @}

    static bool isX64();  ///< always true

    /// Always 1, deliberately: not the number of processors of the machine.
    static std::uint64_t getNumCPUs();

    // --- Identity --------------------------------------------------------------------------------
    // Set in this order: init, edition flags and analysis mode, full name and year. A null pointer
    // is ignored.

    static void setAppName(const char* name);      ///< does not rebuild the version name
    static const char* getAppName();               ///< as set or found by init
    static void setFullAppName(const char* name);  ///< rebuilds the version name
    static void setDisplayVersionYearString(const char* year);  ///< rebuilds the version name

    /// Rebuilds the version name: the full name (or else the application's name; in analysis mode
    /// "TALOAnalysis"), and, if a year is set, a blank, the year and a blank. The trailing blank is
    /// deliberate.
    static void updateAppVersionName();

    /// The version name, or the application's name if it was never built. Deliberate: for an
    /// application *named* "TALOAnalysis" it is "TALO NURBS Analysis"; the mode plays no part here.
    static const char* getAppVersionName();

    static const char* getCompName();  ///< the maker's name: "Pelloran"

    /// Edition flags, independent of each other; the library does not read them.
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

    /// Chooses the greatest of the steps 96, 120, 144, 192 and 240 dpi that is not above `dpiX` (96
    /// below 96, and, deliberately, from 10240 on) for both axes, scales the icon sizes to it and
    /// prints the step on standard output. `dpiY` is ignored, deliberately.
    ///
    /// Of `dpiX` only the lower 32 bits count, as a signed number: 2^32 + 144 is 144 dpi, and 2^31
    /// to 2^32 - 1 are below 0 and so 96 dpi.
    static void setDpi(std::uint64_t dpiX, std::uint64_t dpiY = 0);
    /// The step that setDpi has chosen, 96 before.
    /// @{
    static std::uint64_t getDpiX();
    static std::uint64_t getDpiY();
    /// @}
    /// That step / 96.
    /// @{
    static double getDpiScaleX();
    static double getDpiScaleY();
    /// @}

    /// Icon sizes in pixels, stored as passed until the next setDpi.
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
    /// Small icon size + 4.
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
