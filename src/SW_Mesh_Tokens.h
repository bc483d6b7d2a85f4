// Words and numbers of text files that can hold anything. For SW_Mesh_*.cpp only.

#pragma once

#include "AK_Basic.h"

#include <charconv>
#include <cmath>

/// Words and numbers of a text file, separated by white space.
class SW_TokenReader {
public:
    explicit SW_TokenReader(const AK_String& path) : _reader(path) {}
    bool IsOpen() const { return _reader.IsOpen(); }
    long Remaining() const { return _reader.Remaining(); }
    AK_String Place() const { return _reader.Place(); }   // of the last word

    /// The next word, "" at the end. One that is longer than any number comes back cut, and is none then.
    const char* Next()
    {
        int byte = _reader.ReadByte();
        while (IsSpace(byte)) byte = _reader.ReadByte();
        _length = 0;
        for (; byte >= 0 && !IsSpace(byte); byte = _reader.ReadByte())
            if (_length < maxToken) _token[_length++] = char(byte);
        _token[_length] = 0;
        return _token;
    }

    bool NextInt(int& value) { return Next() && Parse(value); }

    /// A number beyond the range of a double, and the words for what is no number, come back as not finite.
    bool NextDouble(double& value)
    {
        Next();
        const char* begin = _token[0] == '+' ? _token + 1 : _token;
        const char* end = _token + _length;
        const auto result = std::from_chars(begin, end, value);
        if (result.ec == std::errc::result_out_of_range) value = HUGE_VAL;
        return result.ec != std::errc::invalid_argument && result.ptr == end && begin < end;
    }

private:
    static bool IsSpace(int byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); }

    bool Parse(int& value)
    {
        const char* begin = _token[0] == '+' ? _token + 1 : _token;
        const auto result = std::from_chars(begin, _token + _length, value);
        return result.ec == std::errc() && result.ptr == _token + _length;
    }

    static constexpr int maxToken = 2000;   // a number of a thousand digits is a number
    AK_TextReader _reader;
    char _token[maxToken + 1] = "";
    int _length = 0;
};
