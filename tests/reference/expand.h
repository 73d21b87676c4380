// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A slow, literal model of kxFile::expandFilename: character by character, with the environment and
// the user database as values.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace reference {

struct World {
    std::map<std::string, std::string> variables;
    /// The home directory of a user; for an empty name, that of the effective user.
    std::function<std::optional<std::string>(const std::string&)> home;
};

struct Expansion {
    std::string text;
    std::vector<std::string> errors;  ///< what the log gets
    bool tooLong = false;             ///< whether standard error gets the message
};

inline Expansion expand(const std::string& path, const World& world) {
    constexpr std::size_t longest = 2047;
    Expansion result;
    const auto unchanged = [&] {
        result.text = path;
        return result;
    };
    const auto log = [&](const char* what, const std::string& name) {
        const std::string printed = name.substr(0, name.find('\0'));  // as "%s" prints it
        result.errors.push_back(("expandFilename: " + (what + printed) + "!").substr(0, longest));
    };
    if (path.size() > longest) {
        result.tooLong = true;
        return unchanged();
    }
    for (std::size_t at = 0; at < path.size();) {
        const char c = path[at];
        const char before = at == 0 ? ' ' : path[at - 1];
        const char after = at + 1 < path.size() ? path[at + 1] : '\0';
        const bool beginsWord = before == '\t' || before == ' ' || before == ';' || before == '<' ||
                                before == '>' || before == '|';
        std::string name, piece;
        bool found = true;
        if (c == '$') {
            ++at;
            if (after == '(' || after == '{') {
                const char closing = after == '(' ? ')' : '}';
                ++at;
                while (at < path.size() && path[at] != closing && path[at] != ' ')
                    name += path[at++];
                if (at == path.size() || path[at] != closing) log("syntax error in env.var ", name);
                ++at;
            } else {
                const std::string allowed =
                    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
                while (at < path.size() && allowed.find(path[at]) != std::string::npos)
                    name += path[at++];
            }
            const auto variable = world.variables.find(name);
            found = !name.empty() && variable != world.variables.end();
            if (found) piece = variable->second;
        } else if (c == '~' && beginsWord) {
            ++at;
            while (at < path.size() && path[at] != '/' && path[at] != ' ') name += path[at++];
            const std::optional<std::string> home = world.home(name);
            found = home.has_value();
            if (found) piece = *home;
        } else {
            ++at;
            piece = std::string(1, c);
        }
        if (!found) {
            log("couldn't expand env.var ", name);
            return unchanged();
        }
        result.text += piece;
        if (result.text.size() > longest) {
            result.tooLong = true;
            return unchanged();
        }
    }
    return result;
}

}  // namespace reference
