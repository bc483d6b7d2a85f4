// The checksum by which an input file is known again: SHA-256 (FIPS 180-4).

#pragma once

#include <string>

/// In lower-case hexadecimal digits, and how many bytes the file has; "" if it cannot be read.
std::string KORVO_Sha256OfFile(const std::string& path, unsigned long long& numBytes);
