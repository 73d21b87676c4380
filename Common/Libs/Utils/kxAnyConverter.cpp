// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxAnyConverter.h"

#include <cstdio>
#include <typeinfo>

std::list<kxAnyConverter*> kxAnyConverter::_converters;

kxAnyConverter::kxAnyConverter(const std::string& name) : _name(name) {
    _converters.push_back(this);
}

kxAnyConverter::~kxAnyConverter() { _converters.remove(this); }

bool kxAnyConverter::toString(const boost::any& value, std::string& text, std::string& typeName) {
    for (kxAnyConverter* converter : _converters)
        if (converter->convertToString(value, text, typeName)) return true;

    text.clear();
    typeName = "unknown";
    const char* const rule = "!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!!";
    std::puts(rule);
    std::fprintf(stdout, "Tried to serialize unknown type ( %s ), please register !!!\n",
                 value.type().name());
    std::puts(rule);
    return false;
}

bool kxAnyConverter::fromString(const std::string& typeName, const std::string& text,
                                boost::any& value) {
    for (kxAnyConverter* converter : _converters)
        if (converter->convertFromString(typeName, text, value)) return true;
    return false;
}
