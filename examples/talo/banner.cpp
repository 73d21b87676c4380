// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "banner.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "kxFile.h"
#include "kxFont.h"
#include "replacing_file.h"

namespace {

// A regular file keeps its content until the new one is complete. Anything else, such as a device
// or a link, is written to and not replaced.
bool save(const std::string& path, const std::string& content) {
    struct stat info {};
    mode_t mode = 0666;
    if (lstat(path.c_str(), &info) == 0) {
        if (!S_ISREG(info.st_mode)) return kxFile::write(path, content);
        if (faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) return false;
        mode = info.st_mode & 0777;
    } else if (errno != ENOENT) {
        return false;
    }
    ReplacingFile file(path, mode);
    return file.file() && writeAll(file.file(), content.data(), content.size()) && file.commit();
}

}  // namespace

bool writeBanner(const std::string& path, const std::string& text) {
    constexpr std::size_t cellWidth = 6, height = 7, scale = 3, bytesPerPixel = 3;
    // One column more than the text, since a cell that ends at the very edge is not drawn.
    const std::size_t width = cellWidth * text.size() + 1;
    std::vector<unsigned char> image(bytesPerPixel * width * height, 0x20);
    const unsigned int amber = 0x40C0FF;  // red is the lowest byte
    kxFont::drawText(image.data(), text, static_cast<int>(width), amber);

    std::string ppm =
        "P6\n" + std::to_string(scale * width) + ' ' + std::to_string(scale * height) + "\n255\n";
    for (std::size_t y = 0; y < scale * height; ++y)
        for (std::size_t x = 0; x < scale * width; ++x) {
            // The font draws the bottom row first, as textures are stored; PPM begins at the top.
            const std::size_t row = height - 1 - y / scale;
            const unsigned char* const pixel = &image[bytesPerPixel * (row * width + x / scale)];
            ppm.append(pixel, pixel + bytesPerPixel);
        }
    return save(path, ppm);
}
