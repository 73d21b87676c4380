// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxFileExtension.h"

#include "kxFile.h"

bool kxFileExtension::addFormat(const std::string& name, const std::set<std::string>& extensions) {
    return _extension_map.try_emplace(name, extensions).second;
}

bool kxFileExtension::subFormat(const std::string& name) { return _extension_map.erase(name) != 0; }

bool kxFileExtension::replaceFormat(const std::string& name,
                                    const std::set<std::string>& extensions) {
    // Removing the format first would destroy `name` and `extensions` if they refer to its own
    // data.
    _extension_map.insert_or_assign(name, std::set<std::string>(extensions));
    return true;
}

void kxFileExtension::addFormats(const kxFileExtension& other) {
    for (const auto& [name, extensions] : other._extension_map) addFormat(name, extensions);
}

bool kxFileExtension::hasExtension(const std::string& extension) const {
    for (const auto& format : _extension_map)
        if (format.second.count(extension) != 0) return true;
    return false;
}

std::string kxFileExtension::getName(const std::string& extension) const {
    for (const auto& [name, extensions] : _extension_map)
        if (extensions.count(extension) != 0) return name;
    return {};
}

std::set<std::string> kxFileExtension::getExtensions(const std::string& name) const {
    const auto format = _extension_map.find(name);
    return format == _extension_map.end() ? std::set<std::string>() : format->second;
}

std::set<std::string> kxFileExtension::getExtensions() const {
    std::set<std::string> all;
    for (const auto& format : _extension_map)
        all.insert(format.second.begin(), format.second.end());
    return all;
}

std::string kxFileExtension::getExtensionsString(const std::string& separator) const {
    std::string text;
    bool isFirst = true;  // not text.empty(): the first extension may be empty
    for (const std::string& extension : getExtensions()) {
        if (!isFirst) text += separator;
        text += extension;
        isFirst = false;
    }
    return text;
}

std::set<std::string> kxFileExtension::getNames() const {
    std::set<std::string> names;
    for (const auto& format : _extension_map) names.insert(format.first);
    return names;
}

bool kxFileExtension::checkFilename(const std::string& fileName) const {
    for (const auto& format : _extension_map)
        for (const std::string& extension : format.second)
            if (kxFile::hasExtension(fileName, extension)) return true;
    return false;
}
