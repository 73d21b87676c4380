// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Registry of converters between boost::any values and text.
#pragma once

#include <boost/any.hpp>
#include <list>
#include <string>

#include "kxExport.h"

/// The base of the application's converters, one for each type of value. A converter serves for
/// exactly its lifetime: its constructor registers it, and its destructor removes it. The registry
/// does not own it.
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
/// Converters are asked in the order of their construction, and the first that accepts serves the
/// request. An earlier converter therefore hides a later one for its type.
///
/// A constructor that throws std::bad_alloc has not registered the converter. Besides
/// std::bad_alloc, toString() and fromString() pass on what a converter throws.
///
/// Threads: the registry has no lock. Construct, destroy and ask converters on one thread.
class KXUTILS_API kxAnyConverter {
public:
    /// Keeps a copy of `name` and registers the converter after all others.
    kxAnyConverter(const std::string& name);
    /// Removes the converter from the registry.
    virtual ~kxAnyConverter();

    kxAnyConverter(const kxAnyConverter&) = delete;             ///< registered by its address
    kxAnyConverter& operator=(const kxAnyConverter&) = delete;  ///< registered by its address

    /// If this converter handles the type of `value`, writes its text and the name of its type and
    /// returns true. Otherwise returns false and leaves both as they are.
    virtual bool convertToString(const boost::any& value, std::string& text,
                                 std::string& typeName) = 0;

    /// If this converter handles `typeName`, reads `text` into `value` and returns true. Otherwise
    /// returns false.
    virtual bool convertFromString(const std::string& typeName, const std::string& text,
                                   boost::any& value) = 0;

    /// Asks the converters for the text of `value`. If none accepts, the result is false, `text`
    /// becomes empty, `typeName` becomes "unknown", and three lines on standard output name the
    /// missing type.
    static bool toString(const boost::any& value, std::string& text, std::string& typeName);

    /// Asks the converters for the value of `text`. If none accepts, the result is false and
    /// nothing is reported.
    static bool fromString(const std::string& typeName, const std::string& text, boost::any& value);

protected:
    /// The name that was passed to the constructor, for the derived class. The registry never reads
    /// it.
    std::string _name;

private:
    // It exists as soon as the library is loaded, which is before the application's static
    // converters.
    static std::list<kxAnyConverter*> _converters;
};
