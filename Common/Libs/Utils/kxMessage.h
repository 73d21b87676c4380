// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The record of named, dynamically typed values that the library and its host exchange.
#pragma once

#include <boost/any.hpp>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <typeinfo>

#include "kxExport.h"

/// A numeric id and an ordered set of named attributes, each holding a value of any type. A request
/// to the host travels as one kxMessage (see kxUtils::call); the host writes its reply into the
/// same record.
///
/// Copying is unusual, and deliberately so; read the copy constructor and the assignment before you
/// copy a record.
///
/// The record owns its values: what enters is copied. A host reads texts as std::string, and a
/// string literal in a boost::any is a `const char*`, so write
/// `message.set("text", std::string("..."), true)`.
///
/// Threads: none of its own; one thread uses a record at a time. Throws std::bad_alloc and whatever
/// copying a value throws, nothing else, and leaves the record as it was (assignment: with some of
/// the attributes added).
class KXUTILS_API kxMessage {
public:
    /// No attributes, id 0.
    kxMessage() = default;
    /// No attributes. Not explicit, deliberately: `kxMessage message = 7u;` is a record of id 7.
    /// (So a number can be assigned to a record, too, which changes nothing: see the assignment.)
    kxMessage(unsigned int id);
    /// Attributes set in the order of the arguments, each replacing an earlier one of its name.
    /// @{
    kxMessage(unsigned int id, const std::string& name0, const boost::any& value0);
    kxMessage(unsigned int id, const std::string& name0, const boost::any& value0,
              const std::string& name1, const boost::any& value1);
    kxMessage(unsigned int id, const std::string& name0, const boost::any& value0,
              const std::string& name1, const boost::any& value1, const std::string& name2,
              const boost::any& value2);
    /// @}

    /// Copies the attributes, in the order of their names, and, deliberately, NOT the id: the
    /// copy's id is 0.
    kxMessage(const kxMessage& other);

    /// Merges, deliberately, instead of replacing: attributes of `other` whose names are missing
    /// here are added, in their order; attributes that exist here keep their values; the id stays
    /// as it is. Assigning a record to itself changes nothing.
    kxMessage& operator=(const kxMessage& other);

    ~kxMessage() = default;  ///< destroys the stored values

    /// Stores a copy of `value` under `name`. An attribute that exists already is replaced if
    /// `overwrite` is true and otherwise kept.
    void set(const std::string& name, const boost::any& value, bool overwrite);

    /// The stored value, valid until the attribute is removed (or replaced: then it shows the new
    /// value). For an absent name one shared empty value, valid until the program ends; an
    /// attribute set to an empty value looks the same (exists() tells them apart).
    const boost::any& get(const std::string& name) const;

    /// Removes the attribute; an absent name is no error.
    void remove(const std::string& name);

    /// Removes all attributes and keeps the id.
    void clear();

    /// True if an attribute of that name is stored, also when its value is empty.
    bool exists(const std::string& name) const;

    /// The record's identifier, 0 unless set.
    /// @{
    void setId(unsigned int id) { _id = id; }
    unsigned int id() const { return _id; }
    /// @}

    /// All attributes in ascending byte order of their names; valid as long as the record.
    const std::map<std::string, boost::any>& getMap() const { return _attributes; }

    /// Prints a back-trace of the calling stack (kxUtils::printBT; nothing on this platform).
    static void printBT();

private:
    std::map<std::string, boost::any> _attributes;
    unsigned int _id = 0;
};

/// Reads attribute `name` into `result` if it holds a value of a type of T's name (no conversions:
/// an attribute set to an unsigned is no int).
///
///     holds a T                              -> true, result = the value
///     absent, or holds nothing               -> false, result kept, silent
///     holds a value of a type of other name  -> false, result kept, one line on standard error
///
/// That line does not go through the log.
///
/// Types are compared by name alone (std::type_info::name()), so that a value made in a plug-in
/// that carries its own copy of the type information is accepted.
///
/// \warning Two different types of one name cannot be told apart: the value of one is then read as
/// if it were the other, which is undefined behaviour. Such are two local classes of one name in
/// unnamed namespaces of a host and a plug-in, or two versions of a class whose layout has changed
/// in between. Give types that travel in records a name of their own, in a namespace of yours and
/// defined once, in a header that both sides share; change the name when the layout changes.
template <typename T>
bool getFromMessage(const kxMessage& message, const std::string& name, T& result) {
    const boost::any& value = message.get(name);
    if (value.empty()) return false;
    const char* held = value.type().name();
    const char* required = typeid(T).name();
    if (std::strcmp(held, required) != 0) {
        std::fprintf(stderr,
                     "getFromMessage : Attribute '%s' has wrong type (is:'%s' != req:'%s')!\n",
                     name.c_str(), held, required);
        kxMessage::printBT();
        return false;
    }
    // boost::any_cast would compare type objects, which differ between shared objects.
    result = *boost::unsafe_any_cast<T>(&value);
    return true;
}

/// The one instance that the library holds: for the index of the button that a user has chosen.
extern template KXUTILS_API bool getFromMessage<int>(const kxMessage&, const std::string&, int&);
