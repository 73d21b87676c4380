// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The formats of a file dialog.
#include <iostream>

#include <kxFileExtension.h>

int main() {
    kxFileExtension formats;
    formats.addFormat("Scene", {".osb", ".osg"});
    formats.addFormat("Picture", {".png"});
    std::cout << formats.addFormat("Scene", {".obj"}) << '\n'  // refused, not merged
              << formats.getExtensionsString(" *") << '\n'
              << formats.getName(".osg") << '\n'
              << formats.checkFilename("MODEL.OSB") << formats.hasExtension(".OSB") << '\n';
}
// Prints:
// 0
// .osb *.osg *.png
// Scene
// 10
