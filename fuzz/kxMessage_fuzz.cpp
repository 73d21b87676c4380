// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxMessage: records that are changed, copied, merged and read in any order behave like a plain map
// with a number beside it.
#include "kxMessage.h"

#include <array>
#include <typeinfo>
#include <variant>

#include "input.h"
#include "support.h"

using kxfuzz::require;
using kxfuzz::requireEqual;

namespace {

using Value = std::variant<std::monostate, int, unsigned, double, std::string, bool>;

struct Model {
    unsigned id = 0;
    std::map<std::string, Value> attributes;

    void set(const std::string& name, const Value& value, bool overwrite) {
        if (overwrite || attributes.count(name) == 0) attributes[name] = value;
    }
};

boost::any toAny(const Value& value) {
    return std::visit(
        [](const auto& held) -> boost::any {
            if constexpr (std::is_same_v<decltype(held), const std::monostate&>)
                return {};
            else
                return held;
        },
        value);
}

Value randomValue(kxfuzz::Input& input) {
    switch (input.upTo(5)) {
        case 1:
            return static_cast<int>(input.upTo(0xFFFFFFFF));
        case 2:
            return static_cast<unsigned>(input.upTo(0xFFFFFFFF));
        case 3:
            return static_cast<double>(input.upTo(0xFFFFFFFF)) / 7;
        case 4:
            return input.text();
        case 5:
            return input.flag();
        default:
            return {};
    }
}

// There are only a few names, so that they coincide.
std::string randomName(kxfuzz::Input& input) {
    static const std::array<std::string, 6> names = {"", "a", "b", "B", "text", "button"};
    const std::uint32_t i = input.upTo(names.size());
    return i < names.size() ? names[i] : input.text();
}

const char* typeName(const Value& value) {
    return std::visit([](const auto& held) { return typeid(held).name(); }, value);
}

template <class Type>
void checkReading(const kxMessage& message, const Model& model, const std::string& name,
                  const Type& before) {
    Type result = before, expected = before;
    std::string complaint;
    bool isRead = false;
    const auto attribute = model.attributes.find(name);
    if (attribute != model.attributes.end() && attribute->second.index() != 0) {
        const Value& value = attribute->second;
        isRead = std::holds_alternative<Type>(value);
        if (isRead)
            expected = std::get<Type>(value);
        else
            complaint = std::string("getFromMessage : Attribute '") + name.c_str() +
                        "' has wrong type (is:'" + typeName(value) + "' != req:'" +
                        typeid(Type).name() + "')!\n";
    }
    requireEqual("result of getFromMessage", getFromMessage<Type>(message, name, result), isRead);
    requireEqual("value of getFromMessage", result, expected);
    requireEqual("complaint of getFromMessage", kxfuzz::takeErr(), complaint);
}

void checkReadings(const kxMessage& message, const Model& model, const std::string& name) {
    checkReading<int>(message, model, name, -1);
    checkReading<unsigned>(message, model, name, 1);
    checkReading<double>(message, model, name, 0.5);
    checkReading<std::string>(message, model, name, "before");
    checkReading<bool>(message, model, name, true);
}

void checkRecord(const kxMessage& message, const Model& model) {
    requireEqual("id", message.id(), model.id);
    requireEqual("number of attributes", message.getMap().size(), model.attributes.size());
    auto expected = model.attributes.begin();
    for (const auto& [name, value] : message.getMap()) {
        requireEqual("name", name, expected->first);
        require(message.exists(name), "an attribute does not exist");
        require(&message.get(name) == &value, "get gives another value");
        require(value.empty() == (expected->second.index() == 0), "a value is empty or is not");
        if (!value.empty())
            requireEqual("type", std::string(value.type().name()),
                         std::string(typeName(expected->second)));
        ++expected;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kxfuzz::holdConsole();
    kxfuzz::Input input(data, size);
    std::array<kxMessage, 3> records;
    std::array<Model, 3> models;
    while (!input.empty()) {
        const std::size_t which = input.upTo(2), other = input.upTo(2);
        kxMessage& record = records[which];
        Model& model = models[which];
        switch (input.upTo(9)) {
            case 0: {
                const std::string name = randomName(input);
                const Value value = randomValue(input);
                const bool overwrite = input.flag();
                record.set(name, toAny(value), overwrite);
                model.set(name, value, overwrite);
                break;
            }
            case 1: {
                const std::string name = randomName(input);
                record.remove(name);
                model.attributes.erase(name);
                break;
            }
            case 2:
                record.clear();
                model.attributes.clear();
                break;
            case 3:
                model.id = input.upTo(0xFFFFFFFF);
                record.setId(model.id);
                break;
            case 4:
                record = records[other];
                model.attributes.insert(models[other].attributes.begin(),
                                        models[other].attributes.end());
                break;
            case 5: {
                const kxMessage copy = record;
                checkRecord(copy, {0, model.attributes});
                break;
            }
            case 6: {
                const std::string name = randomName(input);
                checkReadings(record, model, name);
                break;
            }
            case 7: {
                const std::string name = randomName(input);
                requireEqual("exists", record.exists(name), model.attributes.count(name) == 1);
                if (!record.exists(name))
                    require(record.get(name).empty() && &record.get(name) == &kxMessage().get(name),
                            "an absent name does not give the shared empty value");
                break;
            }
            case 8: {  // sets an attribute to one of the record's own
                const std::string name = randomName(input), from = randomName(input);
                record.set(name, record.get(from), true);
                const auto source = model.attributes.find(from);
                model.set(name, source == model.attributes.end() ? Value() : source->second, true);
                break;
            }
            default: {
                const unsigned id = input.upTo(0xFFFFFFFF);
                const std::string names[] = {randomName(input), randomName(input),
                                             randomName(input)};
                const Value values[] = {randomValue(input), randomValue(input), randomValue(input)};
                const boost::any anys[] = {toAny(values[0]), toAny(values[1]), toAny(values[2])};
                Model built{id, {}};
                checkRecord(kxMessage(id), built);
                built.set(names[0], values[0], true);
                checkRecord(kxMessage(id, names[0], anys[0]), built);
                built.set(names[1], values[1], true);
                checkRecord(kxMessage(id, names[0], anys[0], names[1], anys[1]), built);
                built.set(names[2], values[2], true);
                checkRecord(kxMessage(id, names[0], anys[0], names[1], anys[1], names[2], anys[2]),
                            built);
                break;
            }
        }
        for (std::size_t i = 0; i < records.size(); ++i) checkRecord(records[i], models[i]);
    }
    for (std::size_t i = 0; i < records.size(); ++i)
        for (const auto& attribute : models[i].attributes)
            checkReadings(records[i], models[i], attribute.first);
    return 0;
}
