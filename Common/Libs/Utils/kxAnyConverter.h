// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Registry of converters between boost::any values and text.
#pragma once

#include <boost/any.hpp>
#include <list>
#include <string>

#include "kxExport.h"

/// Base of the application's converters, one per value type. A converter serves for exactly its
/// lifetime: constructing it registers it, destroying it removes it. The registry does not own it.
///
///     class IntConverter : public kxAnyConverter {
///     public:
///         IntConverter() : kxAnyConverter("int") {}
///         bool convertToString(const boost::any& value, std::string& text,
///                              std::string& typeName) override;
///         bool convertFromString(const std::string& typeName, const std::string& text,
///                                boost::any& value) override;
///     };
///     static IntConverter intConverter;  // registered before main()
///
/// Converters are asked in the order of their construction; the first that accepts serves the
/// request, so an earlier converter hides a later one for the same type.
///
/// A constructor that throws std::bad_alloc has registered nothing.
///
/// Threads: no lock. Construct, destroy and look up on one thread.
class KXUTILS_API kxAnyConverter {
public:
    /// Keeps a copy of `name` and registers the converter after all others.
    kxAnyConverter(const std::string& name);
    /// Removes the converter from the registry.
    virtual ~kxAnyConverter();

    kxAnyConverter(const kxAnyConverter&) = delete;             ///< registered by its address
    kxAnyConverter& operator=(const kxAnyConverter&) = delete;  ///< the same

    /// Returns true if this converter handles the type of `value`, having written its text and the
    /// name of its type; otherwise returns false and leaves both alone.
    virtual bool convertToString(const boost::any& value, std::string& text,
                                 std::string& typeName) = 0;

    /// Returns true if this converter handles `typeName`, having parsed `text` into `value`.
    virtual bool convertFromString(const std::string& typeName, const std::string& text,
                                   boost::any& value) = 0;

    /// Asks the converters for the text of `value`. If none accepts, the result is false, `text` is
    /// empty, `typeName` is "unknown", and three lines on standard output name the missing type.
    static bool toString(const boost::any& value, std::string& text, std::string& typeName);

    /// Asks the converters for the value of `text`. If none accepts, the result is false, silently.
    static bool fromString(const std::string& typeName, const std::string& text, boost::any& value);

protected:
    /// The constructor's name, for the derived class; the registry never reads it.
    std::string _name;

private:
    // Exists as soon as the library is loaded, that is before the application's static converters.
    static std::list<kxAnyConverter*> _converters;
};
