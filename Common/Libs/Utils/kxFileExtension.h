// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Registry of file formats and of the file-name extensions that belong to each.
#pragma once

#include <map>
#include <set>
#include <string>

#include "kxExport.h"

/// The formats that a component reads or writes: each is a name with a set of extensions. An
/// extension may belong to several formats. A registry is an ordinary value; copies, moves and
/// assignments take all its formats.
///
///     kxFileExtension formats;
///     formats.addFormat("Scene", {".osb", ".osg"});
///     formats.checkFilename("MODEL.OSB");      // true
///     formats.getName(".osg");                 // "Scene"
///     formats.getExtensionsString(";");        // ".osb;.osg"
///
/// Names and extensions are kept exactly as they are passed in, with or without a leading dot, so
/// ask in the form in which you registered. They are ordered byte by byte, so capitals come before
/// small letters.
///
/// Deliberate: look-ups compare exactly, case included, while checkFilename() ignores case. There
/// is no index from extension to format: each look-up visits the formats one after the other.
///
/// Arguments may be parts of the registry itself. Threads: as with a standard container, concurrent
/// calls are safe as long as all of them are const. Nothing is thrown but std::bad_alloc. The
/// registry is then as it was before; only addFormats() may have added some of the formats.
class KXUTILS_API kxFileExtension {
public:
    /// Registers a format. If the name is already registered, the result is false, and its
    /// extensions stay as they are: nothing is merged.
    bool addFormat(const std::string& name, const std::set<std::string>& extensions);

    /// Removes a format with all its extensions; false if it is not registered.
    bool subFormat(const std::string& name);

    /// Registers a format with exactly these extensions, in place of an earlier format of that
    /// name. The result is always true.
    bool replaceFormat(const std::string& name, const std::set<std::string>& extensions);

    /// Registers the formats of `other` whose names are missing here. The formats that are
    /// registered here keep their extensions.
    void addFormats(const kxFileExtension& other);

    /// All formats by name; valid as long as the registry.
    const std::map<std::string, std::set<std::string>>& getExtensionMap() const {
        return _extension_map;
    }

    /// True if some format has exactly this extension.
    bool hasExtension(const std::string& extension) const;

    /// The first format, in the order of the names, that has exactly this extension; "" if none.
    std::string getName(const std::string& extension) const;

    /// The extensions of one format; empty for an unknown name.
    std::set<std::string> getExtensions(const std::string& name) const;

    /// The extensions of all formats, each of them once.
    std::set<std::string> getExtensions() const;

    /// The result of getExtensions() as a text: in ascending order, with `separator` between
    /// neighbours. No wildcard or dot is added.
    std::string getExtensionsString(const std::string& separator) const;

    /// The names of all formats.
    std::set<std::string> getNames() const;

    /// True if `fileName` ends with a registered extension; case is ignored
    /// (kxFile::hasExtension()). Deliberate: an extension that was registered without its dot also
    /// accepts names that merely end in its letters, so "osb" accepts "model.xosb". An empty
    /// extension accepts nothing.
    bool checkFilename(const std::string& fileName) const;

private:
    std::map<std::string, std::set<std::string>> _extension_map;
};
