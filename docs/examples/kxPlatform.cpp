// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The name of the application, its directories, and the size of its icons.
#include <iostream>

#include <kxFile.h>
#include <kxPlatform.h>

int main() {
    if (!kxFile::createPath("app/bin/MAC")) return 1;  // an installation, for this example
    kxPlatform::init("app", "viewer");
    kxPlatform::setFullAppName("The Viewer");
    kxPlatform::setDisplayVersionYearString("2017");
    std::cout << '"' << kxPlatform::getAppVersionName() << "\"\n"  // ends with a blank
              << kxPlatform::getBinDir() << '\n'
              << kxPlatform::getPluginsDir() << '\n';

    kxPlatform::setDpi(150);  // prints the step that it chooses
    std::cout << kxPlatform::getDpiScaleX() << ' ' << kxPlatform::getSmallIconSizeX() << '\n';
}
// Prints:
// "The Viewer 2017 "
// app/bin/MAC
// app/lib/plugins/MAC
// Best Matching DPI: 144
// 1.5 24
