// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The bridge to the host application, small operating-system services, and shader decryption.
#pragma once

#include <string>

#include "kxExport.h"
#include "kxMessage.h"

/// Static functions only. Nothing here logs.
class KXUTILS_API kxUtils {
public:
    // --- Host bridge -----------------------------------------------------------------------------
    // The library shows no user interface. Where it needs the user it sends a named request to the
    // one callback that the host has installed; without a callback every request fails quietly.
    //
    // The library itself sends one request, "showMainWarning": attribute "text" (std::string) is
    // what to show. A question also has "button0", "button1", "button2" (std::string, "&" before
    // the accelerator), "default button" and "escape button" (int, an index of a button); the host
    // writes the index of the chosen button into the same record as "button" (int).
    //
    // Threads: the callback pointer is not guarded. Install it once at start-up, before other
    // threads use the library; a request runs on the thread that makes it.

    /// Answers a request: true if the host handled it. `flags` belongs to the host; the library
    /// passes 0.
    using Callback = bool (*)(const char* request, kxMessage& message, int flags);

    /// Installs the host's callback in place of any earlier one; null removes it.
    static void init(Callback callback);

    /// Sends a request and returns the host's answer. Without a callback: false, `message`
    /// untouched.
    static bool call(const char* request, kxMessage& message, int flags = 0);

    /// Sends a request without attributes (an empty record with id 0, discarded afterwards).
    static bool call(const char* request, int flags = 0);

    // --- System services -------------------------------------------------------------------------
    // No state of their own. The environment and the loader's error text are process-wide and
    // unguarded: main thread only.

    /// Sets an environment variable, replacing an existing value. 0 on success; -1, with errno set
    /// by the system, on failure; -1 if an argument is null.
    static int setenv(const char* name, const char* value);

    /// Removes an environment variable. 0 on success; -1 on failure or if `name` is null.
    static int unsetenv(const char* name);

    /// Loads a shared library, its symbols visible to all later ones; `lazy` resolves functions at
    /// their first call instead of at once. Returns a handle for unloadSharedLibrary, or null on
    /// failure (see getLastError) and for an empty path (which leaves a pending error alone).
    static void* loadSharedLibrary(const std::string& path, bool lazy);

    /// Releases a handle; true on success, false on failure and for null.
    static bool unloadSharedLibrary(void* handle);

    /// The address of a symbol, valid until the library is unloaded; null if it is absent.
    static void* resolveSymbol(void* handle, const std::string& name);

    /// The loader's pending error text, or "" if there is none; reading it clears it.
    static std::string getLastError();

    /// Opens a web page in the platform's browser: runs "open -a Safari " followed by `url` or,
    /// where PATH has no such command, or has it only as another name of xdg-open or run-mailcap,
    /// the desktop's own opener (xdg-open). The command is waited for and its status ignored, so
    /// that it does not matter whether the process ignores SIGCHLD. `url` is handed to the shell as
    /// it is, deliberately without quoting: pass only text that is safe in a shell command.
    static void openBrowser(const std::string& url);

    /// Not implemented on this platform: always false.
    static bool findProcess(const std::string& name);

    /// Writes BEL and a newline to std::cout, without flushing.
    static void beep();

    /// Prints a back-trace of the calling stack; does nothing on this platform.
    static void printBT();

    /// Estimates the processor's speed in millions of floating-point operations per second; keeps
    /// the thread busy for 100 million of each kind. `sink` receives a value that depends on the
    /// computation (always 695412096) and keeps it from being optimised away. Where the processor
    /// clock does not advance meanwhile, `mips` means nothing (it is the smallest integer).
    static void calcMips(int& mips, int& sink);

    // --- Shader decryption -----------------------------------------------------------------------
    // A block is a number N (4 bytes, little-endian) and N bytes of text, enciphered with RC4 under
    // a key of the library's own. Any thread may call at any time.

    /// The text of a block, N characters, followed by one "\n" if `lineFeed` is true.
    ///
    /// The block is trusted: it has no checksum and no end mark, so N bytes are read whatever they
    /// are, and `block` must not be null. It may have any alignment and is not kept.
    ///
    /// Enciphering is the same operation: calling this on a block of plain text gives the
    /// enciphered text.
    static std::string decryptShader(const unsigned char* block, bool lineFeed = false);

    /// decryptShader(block, true)
    static std::string decryptShaderLF(const unsigned char* block);

private:
    static Callback _fp;
};
