// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The texts of the two built-in shader programs, ready for the graphics driver.
#include <iostream>
#include <sstream>
#include <string>

#include <kxUtils.h>
#include <shader/defaultMaterial.h>

int main() {
    const std::string vertex = kxUtils::decryptShader(__defaultMaterial_vp);
    const std::string fragment = kxUtils::decryptShaderLF(__defaultMaterial_fp);  // and a line feed

    std::string line;
    std::istringstream lines(vertex);
    while (std::getline(lines, line))
        if (line.rfind("varying", 0) == 0) std::cout << line << '\n';
    std::cout << vertex.size() << ' ' << fragment.size() << '\n';
}
// Prints:
// varying vec3 eyePosition;
// varying vec3 eyeNormal;
// 531 781
