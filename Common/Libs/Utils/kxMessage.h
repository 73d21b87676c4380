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

/// A record: a numeric id and an ordered set of named attributes, each of which holds a value of
/// any type. A request to the host travels as one kxMessage (see kxUtils::call), and the host
/// writes its reply into that record.
///
/// Copying works in an unusual way, deliberately. Read the copy constructor and the assignment
/// before you copy a record.
///
/// The record owns its values: they are copied when they are stored. A host reads texts as
/// std::string, but a string literal in a boost::any is a `const char*`, so write
/// `message.set("text", std::string("..."), true)`.
///
/// Threads: a record has no lock; one thread uses it at a time. Nothing is thrown but
/// std::bad_alloc and what the copying of a value throws. The record is then as it was before; only
/// an assignment may have added some of the attributes.
class KXUTILS_API kxMessage {
public:
    /// No attributes, id 0.
    kxMessage() = default;
    /// No attributes, and this id. Deliberately not explicit: `kxMessage message = 7u;` is a record
    /// with the id 7. (So a number can also be assigned to a record, which then stays as it is: see
    /// the assignment.)
    kxMessage(unsigned int id);
    /// Sets the attributes in the order of the arguments; each replaces an earlier one of its name.
    /// @{
    kxMessage(unsigned int id, const std::string& name0, const boost::any& value0);
    kxMessage(unsigned int id, const std::string& name0, const boost::any& value0,
              const std::string& name1, const boost::any& value1);
    kxMessage(unsigned int id, const std::string& name0, const boost::any& value0,
              const std::string& name1, const boost::any& value1, const std::string& name2,
              const boost::any& value2);
    /// @}

    /// Copies the attributes, in the order of their names, but, deliberately, NOT the id: the copy
    /// has the id 0.
    kxMessage(const kxMessage& other);

    /// Deliberately merges instead of replacing. The attributes of `other` whose names are missing
    /// here are added, in the order of their names; attributes that exist here keep their values;
    /// the id stays as it is. A record that is assigned to itself stays as it is.
    kxMessage& operator=(const kxMessage& other);

    ~kxMessage() = default;  ///< Destroys the stored values.

    /// Stores a copy of `value` under `name`. An attribute that exists already is replaced if
    /// `overwrite` is true and otherwise kept.
    void set(const std::string& name, const boost::any& value, bool overwrite);

    /// The stored value. The reference is valid until the attribute is removed; after a replacement
    /// it shows the new value. For an absent name the result is one shared empty value, valid until
    /// the program ends. An attribute that was set to an empty value looks like an absent one here;
    /// exists() tells them apart.
    const boost::any& get(const std::string& name) const;

    /// Removes the attribute. For an absent name the function does nothing.
    void remove(const std::string& name);

    /// Removes all attributes and keeps the id.
    void clear();

    /// True if an attribute of that name is stored, even if its value is empty.
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

/// Reads the attribute `name` into `result` if the type of its value has the name of the type T.
/// Nothing is converted: an attribute that was set to an unsigned is no int.
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
/// \warning Two different types with one name cannot be told apart: a value of one is then read as
/// if it were of the other, which is undefined behaviour. Examples are two classes of one name in
/// the unnamed namespaces of a host and a plug-in, and two versions of a class whose layout has
/// changed. Give each type that travels in records a name of its own, in a namespace of yours, and
/// define it once, in a header that both sides share. Change the name when the layout changes.
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

/// The only instance in the library. It reads the index of the button that the user has chosen.
extern template KXUTILS_API bool getFromMessage<int>(const kxMessage&, const std::string&, int&);
