// Prime numbers for hash tables of geometry.

#include "AK_Basic_Vec.h"

static bool IsPrime(int n)
{
    if (n < 4) return n > 1;
    if (n % 2 == 0) return false;
    for (int d = 3; d <= n / d; d += 2)
        if (n % d == 0) return false;
    return true;
}

int AK_Vec::NextPrimeNumber(int n)
{
    while (!IsPrime(n)) ++n;
    return n;
}
