// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxMessage.h"

#include "kxUtils.h"

template bool getFromMessage<int>(const kxMessage&, const std::string&, int&);

kxMessage::kxMessage(unsigned int id) : _id(id) {}

kxMessage::kxMessage(unsigned int id, const std::string& name0, const boost::any& value0)
    : _id(id) {
    set(name0, value0, /*overwrite=*/true);
}

kxMessage::kxMessage(unsigned int id, const std::string& name0, const boost::any& value0,
                     const std::string& name1, const boost::any& value1)
    : kxMessage(id, name0, value0) {
    set(name1, value1, /*overwrite=*/true);
}

kxMessage::kxMessage(unsigned int id, const std::string& name0, const boost::any& value0,
                     const std::string& name1, const boost::any& value1, const std::string& name2,
                     const boost::any& value2)
    : kxMessage(id, name0, value0, name1, value1) {
    set(name2, value2, /*overwrite=*/true);
}

// Inserted as a range: a map copied as a whole clones the values in the order of its tree's nodes.
kxMessage::kxMessage(const kxMessage& other)
    : _attributes(other._attributes.begin(), other._attributes.end()) {}

kxMessage& kxMessage::operator=(const kxMessage& other) {
    if (this == &other) return *this;  // a map must not insert a range of its own elements
    _attributes.insert(other._attributes.begin(), other._attributes.end());
    return *this;
}

void kxMessage::set(const std::string& name, const boost::any& value, bool overwrite) {
    const auto [attribute, inserted] = _attributes.try_emplace(name, value);
    if (!inserted && overwrite) attribute->second = value;
}

const boost::any& kxMessage::get(const std::string& name) const {
    static const boost::any absent;
    const auto attribute = _attributes.find(name);
    return attribute == _attributes.end() ? absent : attribute->second;
}

void kxMessage::remove(const std::string& name) { _attributes.erase(name); }

void kxMessage::clear() { _attributes.clear(); }

bool kxMessage::exists(const std::string& name) const { return _attributes.count(name) != 0; }

void kxMessage::printBT() { kxUtils::printBT(); }
