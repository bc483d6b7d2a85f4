// What the tests of the formula language share: a namespace of their own, messages kept as text.

#pragma once

#include "qvt_sci_Internal.h"

#include <gtest/gtest.h>

#include <string>

#include <malloc.h>

inline std::string Repeated(const std::string& piece, int count)
{
    std::string text;
    text.reserve(piece.size() * size_t(count));
    for (int i = 0; i < count; ++i) text += piece;
    return text;
}

/// Repeating a round must not hold on to memory. A leaked block is 24 bytes or more; what the allocator keeps at hand
/// counts as used too.
template <class Round>
void ExpectNoGrowth(int rounds, Round round)
{
    for (int i = 0; i < 100; ++i) round();
    const size_t before = mallinfo2().uordblks;   // 0 under a sanitizer, which finds leaks by itself
    for (int i = 0; i < rounds; ++i) round();
    EXPECT_LT(mallinfo2().uordblks, before + 12 * size_t(rounds));
}

class qvt_sci_Fixture : public testing::Test {
protected:
    void SetUp() override
    {
        root = qvt_sci_NamespaceGetCurrent();
        own = qvt_sci_NamespaceOpen();
        qvt_sci_SetMessageBuffer(buffer, sizeof buffer);
        buffer[0] = 0;
    }

    void TearDown() override
    {
        qvt_sci_SetMessageBuffer(nullptr, 0);
        qvt_sci_allow_symbol_redefinition(0);
        qvt_sci_NamespaceSwitchTo(root);
        qvt_sci_NamespaceDestroy(own);
    }

    /// What has been sent since the last call.
    std::string Messages()
    {
        const std::string text = buffer;
        qvt_sci_SetMessageBuffer(buffer, sizeof buffer);
        buffer[0] = 0;
        return text;
    }

    /// Parses into the test's namespace, which is active afterwards.
    int Parse(const std::string& text)
    {
        const int errors = qvt_sci_ParseString(text.c_str());
        qvt_sci_NamespaceSwitchTo(own);
        return errors;
    }

    /// Calls a function without arguments that returns double.
    static double Value(const char* function) { return qvt_sci_AsDouble(qvt_sci_Call(qvt_sci_FuncPtr(function))); }

    Namespace* root = nullptr;
    Namespace* own = nullptr;

private:
    char buffer[1 << 16];
};
