// World files and other small files of numbers.

#include "AK_VisibleObject_WorldFile.h"

#include "AK_Basic_NewFile.h"

#include <cmath>
#include <cstdlib>

static constexpr int maxFileLength = 4096;   // bytes that are looked at; six numbers of 25 characters need 156

bool AK_ReadNumbersOfFile(const AK_String& name, double* numbers, int n)
{
    AK_TextReader reader(name);
    char text[maxFileLength + 1];
    int length = 0;
    for (int byte; length < maxFileLength && (byte = reader.ReadByte()) >= 0;) text[length++] = char(byte);
    text[length] = 0;
    const char* next = text;
    for (int i = 0; i < n; ++i) {
        char* end;
        numbers[i] = std::strtod(next, &end);
        if (end == next || !std::isfinite(numbers[i])) return false;
        next = end;
    }
    return true;
}

AK_String AK_WorldFile::Name(const AK_String& picture)
{
    static constexpr const char* extensions[][2] = {{"jpg", "jgw"}, {"JPG", "JGW"}, {"ppm", "pmw"}};
    const AK_String extension = picture.Extension();
    for (const auto& [ofPicture, ofWorldFile] : extensions)
        if (extension == ofPicture) return picture.WithExtension(ofWorldFile);
    return picture.WithExtension("xxw");
}

bool AK_WorldFile::Read(const AK_String& name)
{
    double n[6];
    if (!AK_ReadNumbersOfFile(name, n, 6)) return false;
    pixelX = {n[0], n[1]};
    pixelY = {n[2], n[3]};
    first = {n[4], n[5]};
    return true;
}

bool AK_WorldFile::Write(const AK_String& name) const
{
    return AK_WriteFile(name, [this](std::FILE* file) {
        for (const double number : {pixelX.x, pixelX.y, pixelY.x, pixelY.y, first.x, first.y})
            std::fprintf(file, "%.15g\n", number);
    });
}
