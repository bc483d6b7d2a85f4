// PPM files: what is read, what is refused and with which result, and what a round trip keeps.

#include "AK_sogl.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <unistd.h>

namespace
{

/// Of this process: tests run side by side.
const std::string path = testing::TempDir() + "AK_sogl_Ppm_" + std::to_string(getpid()) + ".ppm";
const std::string copy = path + ".copy";

class AK_sogl_Ppm : public testing::Test
{
protected:
    ~AK_sogl_Ppm() override
    {
        std::remove(path.c_str());
        std::remove(copy.c_str());
    }
};

void Put(const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string FileBytes(const std::string& name)
{
    std::ifstream in(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

struct Image {
    int result = -1, width = -1, height = -1, depth = -1;
    std::string data;
};

Image Read(const std::string& name)
{
    Image image;
    unsigned char* data = nullptr;
    image.result = aglReadPpmFile(name.c_str(), &image.width, &image.height, &image.depth, &data);
    if (data) image.data.assign(data, data + image.width * image.height * (image.depth / 8) * 3);
    EXPECT_EQ(data != nullptr, image.result == 0);
    delete[] data;
    return image;
}

}   // namespace

TEST_F(AK_sogl_Ppm, HeaderAndPixelsOfGoodFiles)
{
    const std::string comment = "# " + std::string(5000, '#') + "\n";
    const struct {
        const char* why;
        std::string file;
        int width, height, depth;
        std::string data;
    } cases[] = {
        {"the last row comes first",      "P6\n1 2\n255\nTOPbot",                              1, 2, 8,  "botTOP"},
        {"comments before every line",    "#a\n#b\nP6\n#7 7\n2 1\n" + comment + "255\nabcdef", 2, 1, 8,  "abcdef"},
        {"\"P6\" is enough of a line",    "P6 is the magic\n1 1\n255\nabc",                    1, 1, 8,  "abc"   },
        {"small maximum: one byte",       "P6\n1 1\n1\nabc",                                   1, 1, 8,  "abc"   },
        {"256: two bytes",                "P6\n1 1\n256\nabcdef",                              1, 1, 16, "abcdef"},
        {"pixels may look like comments", "P6\n1 1\n255\n#\n#",                                1, 1, 8,  "#\n#"  },
        {"more than the pixels",          "P6\n 1  1 \n255 \nabcmore",                         1, 1, 8,  "abc"   },
        {"lines with carriage returns",   "P6\r\n1 1\r\n255\r\nabc",                           1, 1, 8,  "abc"   },
    };
    for (const auto& c : cases) {
        Put(c.file);
        const Image image = Read(path);
        ASSERT_EQ(image.result, 0) << c.why;
        EXPECT_EQ(image.width, c.width) << c.why;
        EXPECT_EQ(image.height, c.height) << c.why;
        EXPECT_EQ(image.depth, c.depth) << c.why;
        EXPECT_EQ(image.data, c.data) << c.why;
    }
}

TEST_F(AK_sogl_Ppm, BadFilesGiveTheirResult)
{
    const struct {
        const char* why;
        std::string file;
        int result;
    } cases[] = {
        {"empty",                               "",                                         2},
        {"nothing but a comment",               "# P6",                                     2},
        {"text kind",                           "P3\n1 1\n255\n1 2 3",                      2},
        {"blank before the magic",              " P6\n1 1\n255\nabc",                       2},
        {"no size",                             "P6\n",                                     3},
        {"one number",                          "P6\n1\n1\n255\nabc",                       3},
        {"no width",                            "P6\n0 1\n255\n",                           3},
        {"negative height",                     "P6\n1 -1\n255\nabc",                       3},
        {"words",                               "P6\nwide high\n255\nabc",                  3},
        {"beyond an int",                       "P6\n4294967297 1\n255\nabc",               3},
        {"beyond everything",                   "P6\n1 99999999999999999999999\n255\nabc",  3},
        {"a product that wraps 64 bits",        "P6\n2147483647 2147483647\n65535\nabcdef", 3},
        {"more pixels than the file has",       "P6\n40000 40000\n255\nabc",                3},
        {"one byte short",                      "P6\n1 1\n255\nab",                         3},
        {"short by the second byte of 16 bits", "P6\n1 1\n65535\nabcde",                    3},
        {"no maximum",                          "P6\n1 1\n",                                4},
        {"maximum of 0",                        "P6\n1 1\n0\nabc",                          4},
        {"maximum beyond 16 bits",              "P6\n1 1\n65536\nabcdef",                   4},
    };
    for (const auto& c : cases) {
        Put(c.file);
        const Image image = Read(path);
        EXPECT_EQ(image.result, c.result) << c.why;
        EXPECT_EQ(image.width, -1) << c.why << ": untouched";
    }
    EXPECT_EQ(Read(testing::TempDir() + "no such file.ppm").result, 1);
    EXPECT_EQ(Read(testing::TempDir()).result, 2) << "a directory has no lines";
    EXPECT_EQ(Read("/dev/zero").result, 2) << "a device without an end";
}

TEST_F(AK_sogl_Ppm, EveryPrefixOfAFileIsRefused)
{
    const std::string whole = "# made by hand\nP6\n# size\n3 2\n65535\n" + std::string(36, 'x');
    for (std::size_t length = 0; length < whole.size(); ++length) {
        Put(whole.substr(0, length));
        EXPECT_NE(Read(path).result, 0) << length;
    }
    Put(whole);
    EXPECT_EQ(Read(path).result, 0);
}

TEST_F(AK_sogl_Ppm, RoundTripKeepsTheFile)
{
    for (const std::string header : {"P6\n3 2\n255\n", "P6\n3 2\n65535\n"}) {
        std::string bytes = header;
        const int size = header.find("65535") == std::string::npos ? 18 : 36;
        for (int i = 0; i < size; ++i) bytes += char(i * 37);
        Put(bytes);
        const Image image = Read(path);
        const auto* data = reinterpret_cast<const unsigned char*>(image.data.data());
        ASSERT_EQ(aglWritePpmFile(copy.c_str(), image.width, image.height, image.depth, data), 0);
        EXPECT_EQ(FileBytes(copy), bytes);
    }
}

TEST_F(AK_sogl_Ppm, WriterReportsWhatItCannotWrite)
{
    const unsigned char pixel[6] = {1, 2, 3, 4, 5, 6};
    const std::string unmade = path + ".unmade";
    EXPECT_EQ(aglWritePpmFile(unmade.c_str(), 1, 1, 17, pixel), 3);
    EXPECT_FALSE(std::ifstream(unmade).is_open());
    EXPECT_EQ(aglWritePpmFile((testing::TempDir() + "no such directory/x.ppm").c_str(), 1, 1, 8, pixel), 1);
    EXPECT_EQ(aglWritePpmFile("/dev/full", 1, 1, 8, pixel), 1);
    ASSERT_EQ(aglWritePpmFile(path.c_str(), 1, 1, 9, pixel), 0);
    EXPECT_EQ(FileBytes(path), "P6\n1 1\n65535\n\x01\x02\x03\x04\x05\x06");
}
