// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils label: a line of text in the lower left corner of a picture.
#include <algorithm>
#include <cctype>
#include <memory>

#include "kxFont.h"
#include "output.h"
#include "session.h"

namespace {

constexpr std::size_t cellWidth = 6, cellHeight = 7;  // of the font
constexpr std::size_t bytesPerPixel = 3;
constexpr std::size_t maxSide = 1000000;  // pixels; the rows that the label covers are in memory

struct Options {
    std::string text;
    std::vector<std::string> files;
    std::string colour = "FFFFFF";
};

// Reads the header of a binary PPM byte by byte, and the pixels in blocks.
class PpmReader {
public:
    explicit PpmReader(const std::string& name) : _input(name) {
        if (next() != 'P' || next() != '6') refuse();
        _width = number();
        _height = number();
        if (number() != 255) refuse();
    }

    std::size_t width() const { return _width; }
    std::size_t height() const { return _height; }

    void read(char* pixels, std::size_t size) {
        if (_input.fill(pixels, size) != size) throw Failure(Status::bad, "the picture is cut off");
    }

private:
    [[noreturn]] static void refuse() {
        throw Failure(Status::bad, "not a binary PPM with 8 bits a sample");
    }

    char next() {
        char c = '\0';
        if (_input.fill(&c, 1) == 0) refuse();
        return c;
    }

    // Reads a decimal number after white space and comments, and the one character that ends it.
    std::size_t number() {
        char c = next();
        while (c == '#' || std::isspace(static_cast<unsigned char>(c)) != 0) {
            if (c == '#')
                while (c != '\n') c = next();
            c = next();
        }
        std::size_t value = 0;
        for (; c >= '0' && c <= '9'; c = next()) {
            value = 10 * value + static_cast<std::size_t>(c - '0');
            if (value > maxSide) throw Failure(Status::bad, "the picture is too large");
        }
        if (value == 0 || std::isspace(static_cast<unsigned char>(c)) == 0) refuse();
        return value;
    }

    Input _input;
    std::size_t _width = 0, _height = 0;
};

// The rows that a label covers, or fewer if the picture is lower. The bottom row comes first, as
// kxFont expects.
class BottomRows {
public:
    BottomRows(std::size_t width, std::size_t height)
        : _width(width),
          _rowSize(bytesPerPixel * width),
          _rows(std::min(height, cellHeight)),
          _pixels(cellHeight * _rowSize) {}

    void read(PpmReader& reader) {
        for (std::size_t row = _rows; row-- > 0;) reader.read(at(row), _rowSize);
    }
    void draw(const std::string& text, unsigned int colour) {
        kxFont::drawText(reinterpret_cast<unsigned char*>(_pixels.data()), text,
                         static_cast<int>(_width), colour);
    }
    void write(Writer& out) {
        for (std::size_t row = _rows; row-- > 0;) out.write({at(row), _rowSize});
    }
    std::size_t count() const { return _rows; }

private:
    char* at(std::size_t row) { return &_pixels[row * _rowSize]; }

    std::size_t _width, _rowSize, _rows;
    std::vector<char> _pixels;
};

std::string headOf(std::size_t width, std::size_t height) {
    return "P6\n" + std::to_string(width) + ' ' + std::to_string(height) + "\n255\n";
}

void copyPixels(PpmReader& reader, std::size_t size, Writer& out, Session& session) {
    std::vector<char> block(blockSize);
    while (size > 0) {
        const std::size_t n = std::min(size, block.size());
        reader.read(block.data(), n);
        out.write({block.data(), n});
        session.advance(n);
        size -= n;
    }
}

// "RRGGBB" in the form that kxFont takes, with red in the lowest byte.
unsigned int colourOf(const std::string& text) {
    const unsigned long rgb = std::stoul(text, nullptr, 16);
    return static_cast<unsigned int>((rgb >> 16 & 0xFF) | (rgb & 0xFF00) | (rgb & 0xFF) << 16);
}

std::string checkColour(const std::string& text) {
    const bool isColour =
        text.size() == 6 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
    return isColour ? "" : "'" + text + "' is not of the form RRGGBB";
}

// Labels the picture that `reader` reads, or a background of the label's size.
void writeLabelled(const Options& options, PpmReader* reader, Session& session) {
    const std::size_t width = reader ? reader->width() : cellWidth * options.text.size() + 1;
    const std::size_t height = reader ? reader->height() : cellHeight;
    BottomRows rows(width, height);

    Output output(options.files.back(), session.out);
    Writer& out = output.writer();
    out.write(headOf(width, height));
    if (reader) {
        copyPixels(*reader, bytesPerPixel * width * (height - rows.count()), out, session);
        rows.read(*reader);
    }
    rows.draw(options.text, colourOf(options.colour));
    rows.write(out);
    output.close();
}

void run(const Options& options, Session& session) {
    const bool hasInput = options.files.size() == 2;
    if (session.report.asJson && isStandardOutput(options.files.back()))
        throw UsageError("--json needs a file for the picture");
    if (hasInput) requireDifferentFiles(options.files.front(), options.files.back());
    session.report.add(options.files.front(), [&](Item&) {
        std::optional<PpmReader> reader;
        if (hasInput) reader.emplace(options.files.front());
        writeLabelled(options, reader ? &*reader : nullptr, session);
    });
}

}  // namespace

Work addLabel(Arguments& arguments, Session& session) {
    const auto options = std::make_shared<Options>();
    arguments.text("text", options->text, "The label; the font has the characters from space to z")
        .required();
    arguments
        .texts(
            "file", options->files,
            "[IN.ppm] OUT.ppm: the picture, and the file for the labelled one; without a picture "
            "the label gets a black background of its own size")
        .required()
        .count(1, 2);
    arguments.text("--color", options->colour, "Colour of the text (default: FFFFFF)")
        .typeName("RRGGBB")
        .check(checkColour);
    arguments.footer("Example:\n  kxutils label 'Front view' render.ppm labelled.ppm");
    return [options, &session] { run(*options, session); };
}
