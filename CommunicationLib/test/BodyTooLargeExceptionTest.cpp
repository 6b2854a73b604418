#include "Http/BodyTooLargeException.h"

#include <gtest/gtest.h>

namespace
{

using Orvi::Net::BodyTooLargeException;

TEST(BodyTooLargeException, NamesItselfAndTellsTheSize)
{
    const BodyTooLargeException sut("more than 64 bytes");

    EXPECT_STREQ(sut.name(), "Request body too large");
    EXPECT_EQ(sut.displayText(), "Request body too large: more than 64 bytes");
}

TEST(BodyTooLargeException, IsCaughtAsAMalformedMessage)
{
    try
    {
        throw BodyTooLargeException("12 bytes announced");
    }
    catch (const Poco::Net::MessageException& e)
    {
        EXPECT_EQ(e.message(), "12 bytes announced");
    }
}

} // namespace
