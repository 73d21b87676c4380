// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A plug-in as the makers of the application write it: it exchanges messages with the program that
// loaded it, and registers a converter while it is loaded.
#include "kxHost_plugin.h"

#include <boost/any.hpp>
#include <string>

#include "kxAnyConverter.h"

namespace {

struct LocalValue {
    int value;
};

class PointConverter : public kxAnyConverter {
public:
    PointConverter() : kxAnyConverter("point") {}

    bool convertToString(const boost::any& value, std::string& text,
                         std::string& typeName) override {
        if (value.type() != typeid(char)) return false;
        text = "converted by the plug-in";
        typeName = "plug-in";
        return true;
    }

    bool convertFromString(const std::string& typeName, const std::string& /*text*/,
                           boost::any& value) override {
        if (typeName != "plug-in") return false;
        value = 'p';
        return true;
    }
};

PointConverter pointConverter;

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void fillMessage(kxMessage& message) {
    message.set("number", 42, true);
    message.set("text", std::string("from the plug-in"), true);
    message.set("point", SharedPoint{3, 4}, true);
    message.set("local", LocalValue{5}, true);
}

__attribute__((visibility("default"))) int sumMessage(const kxMessage& message) {
    int number = 0;
    SharedPoint point{};
    if (!getFromMessage(message, "number", number)) return -1;
    if (!getFromMessage(message, "point", point)) return -1;
    return number + point.x + point.y;
}
}
