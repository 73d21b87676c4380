// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The bridge to the host application, small operating-system services, and shader decryption.
#pragma once

#include <string>

#include "kxExport.h"
#include "kxMessage.h"

/// Static functions only. Nothing here logs. Exceptions: std::bad_alloc, and from call() whatever
/// the host's callback throws.
///
/// ## Threads
/// - The callback is not guarded. Install it once at start-up, before other threads use the
///   library. A request runs on the thread that makes it.
/// - System services: the main thread only. They have no state of their own, but the environment
///   and the loader's error text belong to the whole process and are not guarded.
/// - Shaders: any thread, at any time.
class KXUTILS_API kxUtils {
public:
    // --- Host bridge -----------------------------------------------------------------------------
    // The library shows no user interface. When it needs the user, it sends a named request to the
    // callback that the host has installed. Without a callback every request fails quietly.
    //
    // The library itself sends one request, "showMainWarning". Its attribute "text" (std::string)
    // is the text to show. A question also has "button0", "button1", "button2" (std::string, with
    // "&" before the accelerator), "default button" and "escape button" (int, the index of a
    // button). The host writes the index of the chosen button into that record, as "button" (int).

    /// Answers a request: true if the host handled it. `flags` belongs to the host; the library
    /// passes 0.
    using Callback = bool (*)(const char* request, kxMessage& message, int flags);

    /// Installs the host's callback in place of any earlier one; null removes it.
    static void init(Callback callback);

    /// Sends a request and returns the host's answer. Without a callback the result is false, and
    /// `message` stays as it was.
    static bool call(const char* request, kxMessage& message, int flags = 0);

    /// Sends a request without attributes: an empty record with the id 0, which is discarded
    /// afterwards.
    static bool call(const char* request, int flags = 0);

    // --- System services -------------------------------------------------------------------------

    /// Sets an environment variable and replaces an existing value. 0 on success; -1 on failure,
    /// with errno set by the system; -1 if an argument is null.
    static int setenv(const char* name, const char* value);

    /// Removes an environment variable. 0 on success; -1 on failure or if `name` is null.
    static int unsetenv(const char* name);

    /// Loads a shared library, whose symbols become visible to all libraries that are loaded later.
    /// With `lazy` its functions are resolved at their first call instead of at once. Returns a
    /// handle for unloadSharedLibrary(). Null on failure (see getLastError()) and for an empty
    /// path, which leaves a pending error text as it is.
    static void* loadSharedLibrary(const std::string& path, bool lazy);

    /// Releases a handle. True on success, false on failure and for null.
    static bool unloadSharedLibrary(void* handle);

    /// The address of a symbol, valid until the library is unloaded; null if it is absent.
    static void* resolveSymbol(void* handle, const std::string& name);

    /// The loader's pending error text, or "" if there is none; reading it clears it.
    static std::string getLastError();

    /// Opens a web page in the platform's browser. It runs "open -a Safari " followed by `url`, or
    /// the desktop's own opener (xdg-open) if PATH has no command "open", or has it only as another
    /// name of xdg-open or run-mailcap. It waits for the command and ignores its status, so it does
    /// not matter whether the process ignores SIGCHLD. Deliberately, `url` is passed to the shell
    /// as it is, without quoting: pass only text that is safe in a shell command.
    static void openBrowser(const std::string& url);

    /// Not implemented on this platform: always false.
    static bool findProcess(const std::string& name);

    /// Writes BEL and a newline to std::cout, without flushing.
    static void beep();

    /// Prints a back-trace of the calling stack; does nothing on this platform.
    static void printBT();

    /// Estimates the processor's speed: `mips` becomes the number of millions of floating-point
    /// operations per second. The thread is busy for 100 million steps, which count as two
    /// operations each. `sink` receives a value that depends on the computation (always 695412096),
    /// which keeps it from being optimised away. If the processor clock does not advance meanwhile,
    /// `mips` has no meaning (it is the smallest integer).
    static void calcMips(int& mips, int& sink);

    // --- Shader decryption -----------------------------------------------------------------------
    // A block is a number N (4 bytes, little-endian) followed by N bytes of text, which are
    // enciphered with RC4 under a key of the library's own.

    /// The text of a block, N characters, followed by one "\n" if `lineFeed` is true.
    ///
    /// The block is trusted: it has no checksum and no end mark, so N bytes are read, whatever they
    /// are. `block` must not be null. It may have any alignment, and the library does not keep it.
    ///
    /// Enciphering and deciphering are one operation: for a block of plain text the result is the
    /// enciphered text.
    static std::string decryptShader(const unsigned char* block, bool lineFeed = false);

    /// The result of decryptShader(block, true).
    static std::string decryptShaderLF(const unsigned char* block);

private:
    static Callback _fp;
};
