// SHA-256, block by block (FIPS 180-4). Its constants are the first 32 bits of the fractional parts of the square roots
// of the first 8 primes and of the cube roots of the first 64, and are made from these here.

#include "KORVO_Sha256.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>

namespace {

using Words = std::array<std::uint32_t, 64>;
__extension__ using Wide = unsigned __int128;

// floor(2^32 frac(p^(1/root))): the largest x with (x / 2^32)^root <= p, less its whole part, by bisection in integers.
std::uint32_t FractionOfRoot(unsigned p, int root)
{
    Wide low = 0, high = static_cast<Wide>(8) << 32;   // the roots of 311 and 19 are below 8
    while (high - low > 1) {
        const Wide middle = (low + high) / 2;
        const Wide power = root == 2 ? middle * middle : middle * middle * middle;
        const Wide whole = static_cast<Wide>(p) << (32 * root);
        (power <= whole ? low : high) = middle;
    }
    return std::uint32_t(low);
}

Words Roots(int root, int count)
{
    Words words = {};
    int found = 0;
    for (unsigned p = 2; found < count; ++p) {
        bool isPrime = true;
        for (unsigned d = 2; d * d <= p; ++d) isPrime = isPrime && p % d != 0;
        if (isPrime) words[size_t(found++)] = FractionOfRoot(p, root);
    }
    return words;
}

class Sha256 {
public:
    void Add(unsigned char byte)
    {
        _block[_used++] = byte;
        if (_used == _block.size()) TakeBlock();
    }

    std::string Finish(unsigned long long numBytes)
    {
        Add(0x80);
        while (_used != 56) Add(0);
        for (int shift = 56; shift >= 0; shift -= 8) Add(static_cast<unsigned char>(numBytes * 8 >> shift));
        std::string text;
        for (size_t i = 0; i < 8; ++i) {
            char digits[9];
            std::snprintf(digits, sizeof digits, "%08x", _h[i]);
            text += digits;
        }
        return text;
    }

private:
    void TakeBlock()
    {
        Words w = {};
        for (size_t i = 0; i < 64; ++i) w[i / 4] = w[i / 4] << 8 | _block[i];
        for (size_t t = 16; t < 64; ++t) {
            const std::uint32_t a = w[t - 15], b = w[t - 2];
            const std::uint32_t s0 = std::rotr(a, 7) ^ std::rotr(a, 18) ^ a >> 3;
            const std::uint32_t s1 = std::rotr(b, 17) ^ std::rotr(b, 19) ^ b >> 10;
            w[t] = w[t - 16] + s0 + w[t - 7] + s1;
        }
        Words v = _h;   // a to h
        for (size_t t = 0; t < 64; ++t) {
            const std::uint32_t s1 = std::rotr(v[4], 6) ^ std::rotr(v[4], 11) ^ std::rotr(v[4], 25);
            const std::uint32_t t1 = v[7] + s1 + ((v[4] & v[5]) ^ (~v[4] & v[6])) + _k[t] + w[t];
            const std::uint32_t s0 = std::rotr(v[0], 2) ^ std::rotr(v[0], 13) ^ std::rotr(v[0], 22);
            const std::uint32_t t2 = s0 + ((v[0] & v[1]) ^ (v[0] & v[2]) ^ (v[1] & v[2]));
            for (size_t i = 7; i > 0; --i) v[i] = v[i - 1];
            v[4] += t1;
            v[0] = t1 + t2;
        }
        for (size_t i = 0; i < 8; ++i) _h[i] += v[i];
        _used = 0;
    }

    Words _h = Roots(2, 8);
    const Words _k = Roots(3, 64);
    std::array<unsigned char, 64> _block = {};
    size_t _used = 0;
};

}   // namespace

std::string KORVO_Sha256OfFile(const std::string& path, unsigned long long& numBytes)
{
    numBytes = 0;
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) return "";
    Sha256 sum;
    static constexpr size_t blockSize = 1 << 16;
    std::string block(blockSize, 0);
    while (const size_t n = std::fread(block.data(), 1, block.size(), file)) {
        for (size_t i = 0; i < n; ++i) sum.Add(static_cast<unsigned char>(block[i]));
        numBytes += n;
    }
    const bool failed = std::ferror(file) != 0;
    std::fclose(file);
    return failed ? "" : sum.Finish(numBytes);
}
