#include "host/hosterror.h"

#include <gtest/gtest.h>

TEST(ResultRule, FirstErrorWins)
{
    EXPECT_EQ(combineResult(S_OK, E_FAIL), E_FAIL);
    EXPECT_EQ(combineResult(S_FALSE, S_OK), S_OK);
    EXPECT_EQ(combineResult(E_POINTER, E_FAIL), E_POINTER);
    EXPECT_EQ(combineResult(E_POINTER, S_OK), E_POINTER);
}

TEST(HostErrorTest, ThrowIfFailedPassesSuccessCodesThrough)
{
    EXPECT_EQ(throwIfFailed(S_FALSE), S_FALSE);
    try {
        throwIfFailed(E_DOX_FILE_NOT_FOUND, QStringLiteral("Looking up a file."));
        FAIL();
    } catch (const HostError &e) {
        EXPECT_EQ(e.code(), E_DOX_FILE_NOT_FOUND);
        EXPECT_EQ(e.context(), "Looking up a file.");
        EXPECT_STREQ(e.what(), "0x80040213: Looking up a file.");
    }
}
